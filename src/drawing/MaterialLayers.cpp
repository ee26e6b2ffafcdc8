#include "drawing/MaterialLayers.h"

#include "drawing/BackdropFilters.h"

#include <algorithm>
#include <cstddef>

namespace lumo::drawing {

namespace {

Backdrop backdropOf(const Layer &layer) {
    const auto filters = backdropFilters(layer);
    Backdrop result;
    result.deviation = filters.deviation;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            result.matrix.weights[row][column] = static_cast<float>(filters.matrix[row][column]);
        }
        result.matrix.offsets[row] = static_cast<float>(filters.matrix[row][3]);
    }
    result.opacity = std::min(layer.opacity, 1.0F);
    result.blend = layer.blendMode == BlendMode::softLight ? Blend::softLight : Blend::normal;
    return result;
}

bool fills(const Layer &layer, const PlacedLayers &appearance) {
    const auto frame = appearance.toWindow(layer.frame);
    return frame.x <= 0 && frame.y <= 0 && frame.maxX() >= appearance.area.width &&
           frame.maxY() >= appearance.area.height;
}

bool draws(const Layer &layer) {
    return layer.opacity > 0 && (layer.contents || layer.backgroundColor.alpha > 0);
}

bool isNearest(const Layer &layer, const PlacedLayers &appearance) {
    const bool shrinks = layer.contents->width > appearance.area.width ||
                         layer.contents->height > appearance.area.height;
    return (shrinks ? layer.minificationFilter : layer.magnificationFilter) == Sampling::nearest ||
           (layer.contents->width == appearance.area.width &&
            layer.contents->height == appearance.area.height);
}

// Takes the layer into the material if that can draw it next.
bool take(const Layer &layer, const PlacedLayers &appearance, GrainPlanes &planes,
          Material &material) {
    const auto &color = layer.backgroundColor;
    if (!fills(layer, appearance) || material.colorOpacity > 0) {
        return false;
    }
    if (!layer.contents) {
        material.color = {static_cast<float>(color.red), static_cast<float>(color.green),
                          static_cast<float>(color.blue)};
        material.colorOpacity = static_cast<float>(color.alpha) * layer.opacity;
        return layer.blendMode == BlendMode::normal;
    }
    if (material.grain || color.alpha > 0 || layer.blendMode != BlendMode::overlay ||
        !isNearest(layer, appearance)) {
        return false;
    }
    material.grain = planes.find(layer.contents, appearance.area.width, appearance.area.height);
    material.grainOpacity = layer.opacity;
    return material.grain != nullptr;
}

std::shared_ptr<const GrainPlane> planeOf(const Image &image, int width, int height) {
    const auto imageWidth = static_cast<std::size_t>(image.width);
    if (!image.isWhole()) {
        return nullptr;
    }
    std::vector<std::size_t> columns(static_cast<std::size_t>(width));
    for (std::size_t x = 0; x < columns.size(); ++x) {
        columns[x] = (2 * x + 1) * imageWidth / (2 * columns.size());
    }
    auto plane = std::make_shared<GrainPlane>();
    plane->width = width;
    plane->height = height;
    plane->values.reserve(columns.size() * static_cast<std::size_t>(height) + channelSlack);
    for (int y = 0; y < height; ++y) {
        const auto row = (2 * static_cast<std::size_t>(y) + 1) *
                         static_cast<std::size_t>(image.height) /
                         (2 * static_cast<std::size_t>(height));
        for (const auto column : columns) {
            const auto [red, green, blue, alpha] = image.rgbaAt(row * imageWidth + column);
            if (red != green || green != blue || alpha != 0xff) {
                return nullptr;
            }
            plane->values.push_back(red);
        }
    }
    plane->values.resize(plane->values.size() + channelSlack);
    return plane;
}

} // namespace

std::shared_ptr<const GrainPlane> GrainPlanes::find(const std::shared_ptr<const Image> &image,
                                                    int width, int height) {
    std::erase_if(entries_, [](const Entry &entry) { return entry.plane.expired(); });
    for (const auto &entry : entries_) {
        auto plane = entry.plane.lock();
        if (entry.image.lock() == image && plane->width == width && plane->height == height) {
            return plane;
        }
    }
    auto plane = planeOf(*image, width, height);
    if (plane) {
        entries_.push_back({image, plane});
    }
    return plane;
}

MaterialLayers materialLayers(const PlacedLayers &appearance, GrainPlanes &planes) {
    MaterialLayers result;
    for (const auto &layer : appearance.tree.layers) {
        if (layer.kind == Layer::Kind::backdrop) {
            if (layer.opacity > 0) {
                result.material.backdrops.push_back(backdropOf(layer));
            }
        } else if (draws(layer) && !result.material.backdrops.empty()) {
            auto material = result.material;
            if (result.others.empty() && take(layer, appearance, planes, material)) {
                result.material = std::move(material);
            } else {
                result.others.push_back(layer);
            }
        }
    }
    return result;
}

} // namespace lumo::drawing

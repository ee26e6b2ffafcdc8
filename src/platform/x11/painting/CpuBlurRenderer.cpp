#include "platform/x11/painting/CpuBlurRenderer.h"

#include "platform/x11/painting/RequestTransfer.h"
#include "platform/x11/painting/SharedMemoryTransfer.h"
#include "platform/x11/server/Connection.h"
#include "platform/x11/server/ProtocolRectangle.h"
#include "platform/x11/server/RenderFormats.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <span>
#include <string_view>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr std::uint8_t texelDepth = 32;

int halfUp(int value) {
    return (value + 1) / 2;
}

// The same without the margin of that width, except where it was cut off by the limit's edge.
drawing::PixelRect inset(const drawing::PixelRect &rect, int margin,
                         const drawing::PixelRect &limit) {
    const int left = rect.x == limit.x ? rect.x : rect.x + margin;
    const int top = rect.y == limit.y ? rect.y : rect.y + margin;
    const int right = rect.maxX() == limit.maxX() ? rect.maxX() : rect.maxX() - margin;
    const int bottom = rect.maxY() == limit.maxY() ? rect.maxY() : rect.maxY() - margin;
    return {left, top, right - left, bottom - top};
}

// The texels of half the size that have a share in it.
drawing::PixelRect halved(const drawing::PixelRect &rect) {
    const int left = rect.x / 2;
    const int top = rect.y / 2;
    return {left, top, halfUp(rect.maxX()) - left, halfUp(rect.maxY()) - top};
}

bool hasFourBytesPerPixel(const Connection &connection, std::uint8_t depth) {
    const auto *formats = xcb_setup_pixmap_formats(&connection.setup());
    const std::span all(
        formats, static_cast<std::size_t>(xcb_setup_pixmap_formats_length(&connection.setup())));
    return std::ranges::any_of(all, [depth](const xcb_format_t &format) {
        return format.depth == depth && format.bits_per_pixel == 32;
    });
}

std::uint16_t extent(int value) {
    return static_cast<std::uint16_t>(value);
}

} // namespace

bool CpuBlurRenderer::isPossible(const DrawingTools &tools) {
    return std::endian::native == std::endian::little &&
           tools.connection.setup().image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST &&
           hasFourBytesPerPixel(tools.connection, texelDepth) &&
           tools.formats.translucent() != XCB_NONE;
}

CpuBlurRenderer::CpuBlurRenderer(const DrawingTools &tools, drawing::GrainPlanes &planes)
    : tools_(tools)
    , connection_(tools.connection)
    , planes_(planes) {
    transfers_.push_back(std::make_unique<RequestTransfer>(connection_));
    if (connection_.extensions().shm) {
        transfers_.push_back(std::make_unique<SharedMemoryTransfer>(connection_));
    }
}

void CpuBlurRenderer::prepare(const drawing::PlacedLayers &appearance, const RenderTarget &target) {
    cancel();
    auto layers = drawing::materialLayers(appearance, planes_);
    const bool isOtherTarget = target.scenePixmap != target_.scenePixmap ||
                               target.canvasPixmap != target_.canvasPixmap ||
                               target.width != target_.width || target.height != target_.height;
    appearance_ = appearance;
    target_ = target;
    others_ = std::move(layers.others);
    maskedOut_ = appearance.maskedOut();
    if (layers.material.backdrops.empty()) {
        material_.reset();
        return;
    }
    if (!material_ || isOtherTarget || material_->material() != layers.material) {
        material_.emplace(target.width, target.height, std::move(layers.material));
    }
    if (isOtherTarget || material_->texelSize() != levelsFor_) {
        makeLevels();
    }
    if (isOtherTarget) {
        makeStaging();
    }
}

CpuBlurRenderer::Level CpuBlurRenderer::makeLevel(xcb_pixmap_t from, xcb_render_pictformat_t format,
                                                  int width, int height) {
    Level level{OwnedPixmap(connection_), OwnedPicture(connection_), OwnedPicture(connection_)};
    xcb_create_pixmap(connection_, texelDepth, level.pixmap.id(), connection_.root(), extent(width),
                      extent(height));
    xcb_render_create_picture(connection_, level.picture.id(), level.pixmap.id(),
                              tools_.formats.translucent(), 0, nullptr);
    // Beyond its edges it is transparent, hence black, as the texels are to be there.
    xcb_render_create_picture(connection_, level.source.id(), from, format, 0, nullptr);
    return level;
}

void CpuBlurRenderer::makeLevels() {
    levels_.clear();
    levelsFor_ = material_->texelSize();
    if (levelsFor_ == 1) {
        levels_.push_back(
            makeLevel(target_.scenePixmap, target_.format, target_.width, target_.height));
        return;
    }
    int width = target_.width;
    int height = target_.height;
    for (int size = 2; size <= levelsFor_; size *= 2) {
        const auto from = levels_.empty() ? target_.scenePixmap : levels_.back().pixmap.id();
        const auto format = levels_.empty() ? target_.format : tools_.formats.translucent();
        width = halfUp(width);
        height = halfUp(height);
        levels_.push_back(makeLevel(from, format, width, height));
        const auto source = levels_.back().source.id();
        constexpr xcb_render_fixed_t one = 1 << 16;
        const xcb_render_transform_t half{2 * one, 0, 0, 0, 2 * one, 0, 0, 0, one};
        xcb_render_set_picture_transform(connection_, source, half);
        constexpr std::string_view filter = "bilinear";
        xcb_render_set_picture_filter(connection_, source,
                                      static_cast<std::uint16_t>(filter.size()), filter.data(), 0,
                                      nullptr);
    }
}

void CpuBlurRenderer::makeStaging() {
    staging_.reset();
    stagingPicture_.reset();
    auto pixmap = target_.canvasPixmap;
    if (target_.depth < 24 || target_.depth == 30 ||
        !hasFourBytesPerPixel(connection_, target_.depth)) {
        staging_ = OwnedPixmap(connection_);
        xcb_create_pixmap(connection_, texelDepth, staging_.id(), connection_.root(),
                          extent(target_.width), extent(target_.height));
        stagingPicture_ = OwnedPicture(connection_);
        xcb_render_create_picture(connection_, stagingPicture_.id(), staging_.id(),
                                  tools_.formats.translucent(), 0, nullptr);
        pixmap = staging_.id();
    }
    context_ = OwnedGraphicsContext(connection_);
    xcb_create_gc(connection_, context_.id(), pixmap, 0, nullptr);
}

int CpuBlurRenderer::reach() const {
    return material_ ? material_->reach() : 0;
}

void CpuBlurRenderer::cancel() {
    if (!transfers_.empty()) {
        transfers_.back()->cancel();
    }
    done_ = nullptr;
}

void CpuBlurRenderer::render(const std::vector<drawing::PixelRect> &damage,
                             std::function<void(bool succeeded)> done) {
    cancel();
    done_ = std::move(done);
    if (!material_) {
        std::exchange(done_, nullptr)(false);
        return;
    }
    downsample(damage);
    tiles_.clear();
    for (const auto &part : damage) {
        tiles_.push_back({material_->texelsFor(part), part});
    }
    transfer();
}

void CpuBlurRenderer::downsample(const std::vector<drawing::PixelRect> &damage) {
    const drawing::PixelRect whole{0, 0, target_.width, target_.height};
    for (const auto &part : damage) {
        auto changed = inset(part, material_->reach(), whole);
        for (const auto &level : levels_) {
            if (levelsFor_ > 1) {
                changed = halved(changed);
            }
            const auto at = toProtocol(changed);
            xcb_render_composite(connection_, XCB_RENDER_PICT_OP_SRC, level.source.id(), XCB_NONE,
                                 level.picture.id(), at.x, at.y, 0, 0, at.x, at.y, at.width,
                                 at.height);
        }
    }
}

void CpuBlurRenderer::transfer() {
    if (transfers_.empty()) {
        std::exchange(done_, nullptr)(false);
        return;
    }
    const TileRoute route{levels_.back().pixmap.id(),
                          staging_ ? staging_.id() : target_.canvasPixmap,
                          staging_ ? texelDepth : target_.depth, context_.id()};
    transfers_.back()->start(
        route, tiles_,
        [this](const Tile &tile, const std::uint8_t *texels, std::uint8_t *pixels) {
            material_->render(tile.pixels, texels,
                              bytesPerPixel * static_cast<std::size_t>(tile.texels.width), pixels,
                              bytesPerPixel * static_cast<std::size_t>(tile.pixels.width));
        },
        [this](bool succeeded) { transferred(succeeded); });
}

void CpuBlurRenderer::transferred(bool succeeded) {
    if (!succeeded) {
        transfers_.pop_back();
        transfer();
        return;
    }
    if (staging_) {
        for (const auto &tile : tiles_) {
            copyToCanvas(stagingPicture_.id(), tile.pixels);
        }
    }
    images_ = drawLayersOnto(target_.canvas, tools_, *appearance_, others_);
    blendSceneOver();
    for (const auto &part : maskedOut_.rectangles()) {
        copyToCanvas(target_.scene, part);
    }
    std::exchange(done_, nullptr)(true);
}

void CpuBlurRenderer::copyToCanvas(xcb_render_picture_t source, const drawing::PixelRect &part) {
    const auto at = toProtocol(part);
    xcb_render_composite(connection_, XCB_RENDER_PICT_OP_SRC, source, XCB_NONE, target_.canvas,
                         at.x, at.y, 0, 0, at.x, at.y, at.width, at.height);
}

// What is not all opaque lets the scene through.
void CpuBlurRenderer::blendSceneOver() {
    const double opacity = material_->opacity() * appearance_->alpha;
    const auto through = static_cast<std::uint16_t>(std::lround((1 - opacity) * 0xffff));
    if (through == 0) {
        return;
    }
    const OwnedPicture mask(connection_);
    xcb_render_create_solid_fill(connection_, mask.id(), {0, 0, 0, through});
    xcb_render_composite(connection_, XCB_RENDER_PICT_OP_OVER, target_.scene, mask.id(),
                         target_.canvas, 0, 0, 0, 0, 0, 0, extent(target_.width),
                         extent(target_.height));
}

} // namespace lumo::x11

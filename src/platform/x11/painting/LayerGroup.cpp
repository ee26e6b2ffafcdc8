#include "platform/x11/painting/LayerGroup.h"

#include "drawing/PremultipliedColor.h"
#include "platform/x11/server/ProtocolRectangle.h"
#include "platform/x11/server/RenderFormats.h"

#include <cmath>
#include <string_view>

namespace lumo::x11 {

namespace {

using drawing::channel;

xcb_render_fixed_t fixed(double value) {
    return static_cast<xcb_render_fixed_t>(std::lround(value * 65536));
}

std::uint8_t operatorOf(BlendMode mode) {
    switch (mode) {
    case BlendMode::overlay:
        return XCB_RENDER_PICT_OP_OVERLAY;
    case BlendMode::softLight:
        return XCB_RENDER_PICT_OP_SOFT_LIGHT;
    case BlendMode::normal:
        break;
    }
    return XCB_RENDER_PICT_OP_OVER;
}

class GroupDrawing {
  public:
    GroupDrawing(const DrawingTools &tools, const drawing::PlacedLayers &appearance)
        : tools_(tools)
        , connection_(tools.connection)
        , appearance_(appearance) {}

    LayerGroup draw() {
        makeCanvas(result_.pixmap, result_.picture);
        canvas_ = result_.picture.id();
        drawAll(appearance_.tree.layers);
        applyMask();
        if (appearance_.alpha < 1) {
            const auto all = canvasRectangle();
            const xcb_render_color_t alpha{0, 0, 0, channel(appearance_.alpha)};
            xcb_render_fill_rectangles(connection_, XCB_RENDER_PICT_OP_IN_REVERSE, canvas_, alpha,
                                       1, &all);
        }
        return std::move(result_);
    }

    std::vector<std::shared_ptr<const ServerImage>> drawOnto(xcb_render_picture_t opaque,
                                                             const std::vector<Layer> &layers) {
        canvas_ = opaque;
        isEmpty_ = false;
        drawAll(layers);
        return std::move(result_.images);
    }

  private:
    xcb_rectangle_t canvasRectangle() const {
        return toProtocol({0, 0, appearance_.area.width, appearance_.area.height});
    }

    void makeCanvas(OwnedPixmap &pixmap, OwnedPicture &picture) {
        pixmap = OwnedPixmap(connection_);
        picture = OwnedPicture(connection_);
        const auto all = canvasRectangle();
        xcb_create_pixmap(connection_, 32, pixmap.id(), connection_.root(), all.width, all.height);
        xcb_render_create_picture(connection_, picture.id(), pixmap.id(),
                                  tools_.formats.translucent(), 0, nullptr);
        xcb_render_fill_rectangles(connection_, XCB_RENDER_PICT_OP_CLEAR, picture.id(), {}, 1,
                                   &all);
    }

    void drawAll(const std::vector<Layer> &layers) {
        for (const auto &layer : layers) {
            if (layer.kind == Layer::Kind::plain && layer.opacity > 0) {
                drawLayer(layer);
            }
        }
    }

    void drawLayer(const Layer &layer) {
        const auto frame = appearance_.toWindow(layer.frame);
        if (frame.width <= 0 || frame.height <= 0) {
            return;
        }
        // Over nothing every blend is the plain one, which servers do much faster.
        const auto blend = isEmpty_ ? static_cast<std::uint8_t>(XCB_RENDER_PICT_OP_OVER)
                                    : operatorOf(layer.blendMode);
        if (layer.backgroundColor.alpha > 0 && layer.contents) {
            // Opacity and blend apply to both as one.
            OwnedPixmap pixmap;
            OwnedPicture both;
            makeCanvas(pixmap, both);
            drawColor(layer, frame, XCB_RENDER_PICT_OP_SRC, 1, both.id());
            drawContents(layer, frame, XCB_RENDER_PICT_OP_OVER, 1, both.id());
            compose(blend, both.id(), layer.opacity, canvas_, frame, frame.x, frame.y);
        } else if (layer.contents) {
            drawContents(layer, frame, blend, layer.opacity, canvas_);
        } else if (layer.backgroundColor.alpha > 0) {
            drawColor(layer, frame, blend, layer.opacity, canvas_);
        }
        isEmpty_ = false;
    }

    void drawColor(const Layer &layer, const drawing::PixelRect &frame, std::uint8_t blend,
                   double opacity, xcb_render_picture_t onto) {
        const auto rectangle = toProtocol(frame);
        xcb_render_fill_rectangles(
            connection_, blend, onto,
            drawing::premultiplied<xcb_render_color_t>(layer.backgroundColor, opacity), 1,
            &rectangle);
    }

    void drawContents(const Layer &layer, const drawing::PixelRect &frame, std::uint8_t blend,
                      double opacity, xcb_render_picture_t onto) {
        auto image = tools_.images.find(layer.contents);
        if (!image) {
            return;
        }
        const OwnedPicture source(connection_);
        xcb_render_create_picture(connection_, source.id(), image->pixmap.id(),
                                  tools_.formats.translucent(), 0, nullptr);
        if (image->width != frame.width || image->height != frame.height) {
            scale(source.id(), layer, *image, frame);
        }
        compose(blend, source.id(), opacity, onto, frame, 0, 0);
        result_.images.push_back(std::move(image));
    }

    void scale(xcb_render_picture_t source, const Layer &layer, const ServerImage &image,
               const drawing::PixelRect &frame) {
        const xcb_render_transform_t transform{
            fixed(static_cast<double>(image.width) / frame.width),
            0,
            0,
            0,
            fixed(static_cast<double>(image.height) / frame.height),
            0,
            0,
            0,
            fixed(1)};
        xcb_render_set_picture_transform(connection_, source, transform);
        const bool shrinks = image.width > frame.width || image.height > frame.height;
        const auto sampling = shrinks ? layer.minificationFilter : layer.magnificationFilter;
        const std::string_view filter = sampling == Sampling::nearest ? "nearest" : "bilinear";
        xcb_render_set_picture_filter(connection_, source,
                                      static_cast<std::uint16_t>(filter.size()), filter.data(), 0,
                                      nullptr);
        // So that linear sampling does not fade out towards the frame's edges.
        const std::uint32_t pad = XCB_RENDER_REPEAT_PAD;
        xcb_render_change_picture(connection_, source, XCB_RENDER_CP_REPEAT, &pad);
    }

    void compose(std::uint8_t blend, xcb_render_picture_t source, double opacity,
                 xcb_render_picture_t onto, const drawing::PixelRect &frame, int sourceX,
                 int sourceY) {
        OwnedPicture mask;
        if (opacity < 1) {
            mask = OwnedPicture(connection_);
            xcb_render_create_solid_fill(connection_, mask.id(), {0, 0, 0, channel(opacity)});
        }
        const auto to = toProtocol(frame);
        xcb_render_composite(connection_, blend, source, mask.id(), onto,
                             static_cast<std::int16_t>(sourceX), static_cast<std::int16_t>(sourceY),
                             0, 0, to.x, to.y, to.width, to.height);
    }

    void applyMask() {
        const auto maskedOut = toProtocol(appearance_.maskedOut());
        if (!maskedOut.empty()) {
            xcb_render_fill_rectangles(connection_, XCB_RENDER_PICT_OP_CLEAR, canvas_, {},
                                       static_cast<std::uint32_t>(maskedOut.size()),
                                       maskedOut.data());
        }
    }

    const DrawingTools &tools_;
    Connection &connection_;
    const drawing::PlacedLayers &appearance_;
    LayerGroup result_;
    xcb_render_picture_t canvas_ = XCB_NONE;
    bool isEmpty_ = true;
};

} // namespace

LayerGroup drawLayers(const DrawingTools &tools, const drawing::PlacedLayers &appearance) {
    return GroupDrawing(tools, appearance).draw();
}

std::vector<std::shared_ptr<const ServerImage>>
drawLayersOnto(xcb_render_picture_t picture, const DrawingTools &tools,
               const drawing::PlacedLayers &appearance, const std::vector<Layer> &layers) {
    return GroupDrawing(tools, appearance).drawOnto(picture, layers);
}

} // namespace lumo::x11

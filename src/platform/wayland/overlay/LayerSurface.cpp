#include "platform/wayland/overlay/LayerSurface.h"

#include "drawing/PlainLayers.h"
#include "platform/MainLoop.h"

#include <layer-shell-client-protocol.h>
#include <viewporter-client-protocol.h>
#include <wayland-client.h>

#include <algorithm>
#include <utility>

namespace lumo::wayland {

namespace {

// As many as a compositor may hold on to at once, and the one that is drawn into.
constexpr std::size_t mostCanvases = 3;

// Seconds. A surface that is not seen gets no refresh; when it is seen again it has to be right.
constexpr double longestWaitForRefresh = 0.1;

// Seconds without a change until the canvases take up none of this process's memory: changes often
// come one after the other, and bringing the pages back costs as much as drawing into them.
constexpr double restUntilPagesGo = 2;

constexpr std::uint32_t allEdges =
    ZWLR_LAYER_SURFACE_V1_ANCHOR_TOP | ZWLR_LAYER_SURFACE_V1_ANCHOR_BOTTOM |
    ZWLR_LAYER_SURFACE_V1_ANCHOR_LEFT | ZWLR_LAYER_SURFACE_V1_ANCHOR_RIGHT;

constexpr std::int32_t overPanels = -1; // as an exclusive zone

drawing::PixelRect sizeOf(const drawing::PlacedLayers &layers) {
    return {0, 0, layers.area.width, layers.area.height};
}

// Of every row that the part lies in, once.
void expectDrawing(const SharedBuffer &buffer, const drawing::Region &part) {
    int end = 0;
    for (const auto &box : part.boxes()) {
        const int begin = std::max(box.y, end);
        end = std::max(box.maxY(), end);
        buffer.expectDrawing(begin, end - begin);
    }
}

} // namespace

LayerSurface::LayerSurface(const SurfaceFactories &factories, wl_output *output, MainLoop &mainLoop,
                           std::function<void()> changed)
    : factories_(factories)
    , mainLoop_(mainLoop)
    , changed_(std::move(changed))
    , surface_(wl_compositor_create_surface(factories.compositor.get()))
    , viewport_(wp_viewporter_get_viewport(factories.viewporter.get(), surface_.get()))
    , blur_(*factories.blur, *factories.compositor, *surface_)
    , layerSurface_(zwlr_layer_shell_v1_get_layer_surface(factories.layerShell.get(),
                                                          surface_.get(), output,
                                                          ZWLR_LAYER_SHELL_V1_LAYER_TOP, "lumo"))
    , transparent_(*factories.memory, 1, 1, [] {}) {
    const ProtocolPointer<wl_region> nowhere(
        wl_compositor_create_region(factories.compositor.get()));
    wl_surface_set_input_region(surface_.get(), nowhere.get());
    zwlr_layer_surface_v1_set_anchor(layerSurface_.get(), allEdges);
    zwlr_layer_surface_v1_set_exclusive_zone(layerSurface_.get(), overPanels);
    static const zwlr_layer_surface_v1_listener listener = {
        [](void *data, zwlr_layer_surface_v1 *object, std::uint32_t serial, std::uint32_t width,
           std::uint32_t height) {
            zwlr_layer_surface_v1_ack_configure(object, serial);
            static_cast<LayerSurface *>(data)->configure(
                {0, 0, static_cast<int>(width), static_cast<int>(height)});
        },
        [](void *data, zwlr_layer_surface_v1 *) {
            auto &self = *static_cast<LayerSurface *>(data);
            self.isClosed_ = true;
            self.changed_();
        }};
    zwlr_layer_surface_v1_add_listener(layerSurface_.get(), &listener, this);
    wl_surface_commit(surface_.get());
}

LayerSurface::~LayerSurface() {
    layerSurface_.reset(); // first of all: nothing half taken apart is seen
}

void LayerSurface::configure(const drawing::PixelRect &size) {
    if (std::exchange(size_, size) != size) {
        changed_();
    }
}

void LayerSurface::show(const Picture &picture) {
    wanted_ = picture;
    commitWhenPossible();
}

void LayerSurface::commitWhenPossible() {
    const bool isShown = wanted_ == committed_ && committedSize_ == size_;
    if (isClosed_ || size_.isEmpty() || isShown || !transparent_) {
        return;
    }
    if (frame_) {
        if (!longestWait_) {
            longestWait_ = mainLoop_.after(longestWaitForRefresh, [this] { handleFrame(); });
        }
        return;
    }
    if (!wanted_.layers) {
        commit(transparent_.lend(), drawing::PixelRect{0, 0, 1, 1});
        return;
    }
    const auto whole = sizeOf(*wanted_.layers);
    auto *canvas = freeCanvas(whole.width, whole.height);
    if (canvas == nullptr) {
        return; // the release of a buffer comes back here
    }
    draw(*canvas, wanted_);
    const bool looksTheSame = wanted_.layers == committed_.layers && committedSize_ == size_;
    commit(canvas->buffer->lend(), looksTheSame ? (wanted_.cutOut - committed_.cutOut) |
                                                      (committed_.cutOut - wanted_.cutOut)
                                                : drawing::Region(whole));
}

void LayerSurface::commit(wl_buffer *buffer, const drawing::Region &damage) {
    wl_surface_attach(surface_.get(), buffer, 0, 0);
    for (const auto &box : damage.boxes()) {
        wl_surface_damage_buffer(surface_.get(), box.x, box.y, box.width, box.height);
    }
    wp_viewport_set_destination(viewport_.get(), size_.width, size_.height);
    if (wanted_.blurred != committed_.blurred) {
        blur_.set(wanted_.blurred);
    }
    frame_.reset(wl_surface_frame(surface_.get()));
    static const wl_callback_listener listener = {[](void *data, wl_callback *, std::uint32_t) {
        static_cast<LayerSurface *>(data)->handleFrame();
    }};
    wl_callback_add_listener(frame_.get(), &listener, this);
    wl_surface_commit(surface_.get());
    committed_ = wanted_;
    committedSize_ = size_;
}

void LayerSurface::handleFrame() {
    frame_.reset();
    longestWait_.reset();
    commitWhenPossible();
    if (!frame_) {
        rest_ = mainLoop_.after(restUntilPagesGo, [this] {
            for (const auto &canvas : canvases_) {
                canvas.buffer->leaveToCompositor();
            }
        });
    }
}

LayerSurface::Canvas *LayerSurface::freeCanvas(int width, int height) {
    std::erase_if(canvases_, [&](const Canvas &canvas) {
        return !canvas.buffer->isLent() &&
               (canvas.buffer->width() != width || canvas.buffer->height() != height);
    });
    Canvas *best = nullptr; // the one that needs the least drawing
    for (auto &canvas : canvases_) {
        if (!canvas.buffer->isLent() &&
            (best == nullptr || canvas.picture.layers == wanted_.layers)) {
            best = &canvas;
        }
    }
    if (best != nullptr || canvases_.size() >= mostCanvases) {
        return best;
    }
    auto buffer = std::make_unique<SharedBuffer>(*factories_.memory, width, height,
                                                 [this] { commitWhenPossible(); });
    return *buffer ? &canvases_.emplace_back(Canvas{std::move(buffer), {}}) : nullptr;
}

void LayerSurface::draw(Canvas &canvas, const Picture &picture) {
    const auto &layers = *picture.layers;
    auto *pixels = canvas.buffer->pixels();
    const drawing::Region whole = sizeOf(layers);
    const bool looksTheSame = canvas.picture.layers == picture.layers;
    const auto cutOut = picture.cutOut & whole;
    const auto cutOutBefore = looksTheSame ? canvas.picture.cutOut & whole : whole;
    const auto filled = cutOutBefore - cutOut;
    const auto cleared = looksTheSame ? cutOut - cutOutBefore : cutOut;
    expectDrawing(*canvas.buffer, filled | cleared);
    drawing::drawPlainLayers(layers, filled, pixels);
    drawing::clear(cleared, layers.area.width, layers.area.height, pixels);
    canvas.picture = picture;
}

} // namespace lumo::wayland

#include "platform/x11/painting/CpuBlurRenderer.h"

#include "platform/x11/server/Connection.h"
#include "platform/x11/server/RenderFormats.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <span>
#include <string_view>
#include <utility>

namespace lumo::x11 {

namespace {

constexpr std::uint8_t cellDepth = 32;
constexpr std::size_t bytesPerPixel = 4;
constexpr std::uint32_t allPlanes = ~std::uint32_t{0};

std::size_t bytesOf(int width, int height) {
    return bytesPerPixel * static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

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

bool hasFourBytesPerPixel(const Connection &connection, std::uint8_t depth) {
    const auto *formats = xcb_setup_pixmap_formats(&connection.setup());
    const std::span all(
        formats, static_cast<std::size_t>(xcb_setup_pixmap_formats_length(&connection.setup())));
    return std::ranges::any_of(all, [depth](const xcb_format_t &format) {
        return format.depth == depth && format.bits_per_pixel == 32;
    });
}

std::int16_t coordinate(int value) {
    return static_cast<std::int16_t>(value);
}

std::uint16_t extent(int value) {
    return static_cast<std::uint16_t>(value);
}

} // namespace

bool CpuBlurRenderer::isPossible(const DrawingTools &tools) {
    return std::endian::native == std::endian::little &&
           tools.connection.setup().image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST &&
           hasFourBytesPerPixel(tools.connection, cellDepth) &&
           tools.formats.translucent() != XCB_NONE;
}

CpuBlurRenderer::CpuBlurRenderer(const DrawingTools &tools, drawing::GrainPlanes &planes)
    : tools_(tools)
    , connection_(tools.connection)
    , planes_(planes)
    , isSharing_(connection_.extensions().shm) {
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
    if (isOtherTarget || material_->cellSize() != stepsFor_) {
        makeSteps();
    }
    if (isOtherTarget) {
        makeStaging();
    }
}

CpuBlurRenderer::Step CpuBlurRenderer::makeStep(xcb_pixmap_t from, xcb_render_pictformat_t format,
                                                int width, int height, bool shrinks) {
    Step step{OwnedPixmap(connection_), OwnedPicture(connection_), OwnedPicture(connection_), width,
              height};
    xcb_create_pixmap(connection_, cellDepth, step.pixmap.id(), connection_.root(), extent(width),
                      extent(height));
    xcb_render_create_picture(connection_, step.picture.id(), step.pixmap.id(),
                              tools_.formats.translucent(), 0, nullptr);
    // Beyond its edges it is transparent, hence black, as the cells are to be there.
    xcb_render_create_picture(connection_, step.source.id(), from, format, 0, nullptr);
    if (shrinks) {
        constexpr xcb_render_fixed_t one = 1 << 16;
        const xcb_render_transform_t half{2 * one, 0, 0, 0, 2 * one, 0, 0, 0, one};
        xcb_render_set_picture_transform(connection_, step.source.id(), half);
        constexpr std::string_view filter = "bilinear";
        xcb_render_set_picture_filter(connection_, step.source.id(),
                                      static_cast<std::uint16_t>(filter.size()), filter.data(), 0,
                                      nullptr);
    }
    return step;
}

void CpuBlurRenderer::makeSteps() {
    steps_.clear();
    stepsFor_ = material_->cellSize();
    if (stepsFor_ == 1) {
        steps_.push_back(
            makeStep(target_.scenePixmap, target_.format, target_.width, target_.height, false));
        return;
    }
    int width = target_.width;
    int height = target_.height;
    for (int size = 2; size <= stepsFor_; size *= 2) {
        const auto from = steps_.empty() ? target_.scenePixmap : steps_.back().pixmap.id();
        const auto format = steps_.empty() ? target_.format : tools_.formats.translucent();
        width = halfUp(width);
        height = halfUp(height);
        steps_.push_back(makeStep(from, format, width, height, true));
    }
}

void CpuBlurRenderer::makeStaging() {
    staging_.reset();
    stagingPicture_.reset();
    auto pixmap = target_.canvasPixmap;
    if (target_.depth < 24 || target_.depth == 30 ||
        !hasFourBytesPerPixel(connection_, target_.depth)) {
        staging_ = OwnedPixmap(connection_);
        xcb_create_pixmap(connection_, cellDepth, staging_.id(), connection_.root(),
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
    ++round_;
    done_ = nullptr;
}

void CpuBlurRenderer::render(const std::vector<drawing::PixelRect> &parts,
                             std::function<void(bool succeeded)> done) {
    cancel();
    done_ = std::move(done);
    pieces_.clear();
    if (!material_) {
        std::exchange(done_, nullptr)(false);
        return;
    }
    shrink(parts);
    std::size_t size = 0;
    for (const auto &part : parts) {
        const auto cells = material_->cellsFor(part);
        pieces_.push_back({part, cells, size});
        size += bytesOf(cells.width, cells.height);
    }
    if (isSharing_ && cells_.size() < size) {
        cells_ = SharedMemory(connection_, size);
        isSharing_ = static_cast<bool>(cells_);
    }
    if (isSharing_) {
        fetchShared();
    } else {
        fetchPlainly(0);
    }
}

void CpuBlurRenderer::shrink(const std::vector<drawing::PixelRect> &parts) {
    const drawing::PixelRect whole{0, 0, target_.width, target_.height};
    for (const auto &part : parts) {
        auto changed = inset(part, material_->reach(), whole);
        for (const auto &step : steps_) {
            if (stepsFor_ > 1) {
                const int left = changed.x / 2;
                const int top = changed.y / 2;
                changed = {left, top, halfUp(changed.maxX()) - left, halfUp(changed.maxY()) - top};
            }
            xcb_render_composite(connection_, XCB_RENDER_PICT_OP_SRC, step.source.id(), XCB_NONE,
                                 step.picture.id(), coordinate(changed.x), coordinate(changed.y), 0,
                                 0, coordinate(changed.x), coordinate(changed.y),
                                 extent(changed.width), extent(changed.height));
        }
    }
}

// Replies come in the order of requests, so the last one stands for all.
void CpuBlurRenderer::fetchShared() {
    xcb_shm_get_image_cookie_t cookie{};
    for (const auto &piece : pieces_) {
        cookie =
            xcb_shm_get_image(connection_, steps_.back().pixmap.id(), coordinate(piece.cells.x),
                              coordinate(piece.cells.y), extent(piece.cells.width),
                              extent(piece.cells.height), allPlanes, XCB_IMAGE_FORMAT_Z_PIXMAP,
                              cells_.segment(), static_cast<std::uint32_t>(piece.offset));
    }
    connection_.whenReplied<xcb_shm_get_image_reply_t>(
        cookie, lifetime_.guard([this, round = round_](const auto *reply) {
            if (round != round_) {
                return;
            }
            if (reply == nullptr) {
                // The server is not on this machine after all.
                isSharing_ = false;
                cells_ = {};
                fetchPlainly(0);
                return;
            }
            std::size_t size = 0;
            for (const auto &piece : pieces_) {
                size += bytesOf(piece.pixels.width, piece.pixels.height);
            }
            if (pixels_.size() < size) {
                pixels_ = SharedMemory(connection_, size);
            }
            std::size_t offset = 0;
            for (const auto &piece : pieces_) {
                draw(piece, cells_.bytes() + piece.offset, offset);
                offset += bytesOf(piece.pixels.width, piece.pixels.height);
            }
            finish();
        }));
}

void CpuBlurRenderer::fetchPlainly(std::size_t index) {
    const auto &cells = pieces_[index].cells;
    const auto cookie = xcb_get_image(
        connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, steps_.back().pixmap.id(), coordinate(cells.x),
        coordinate(cells.y), extent(cells.width), extent(cells.height), allPlanes);
    connection_.whenReplied<xcb_get_image_reply_t>(
        cookie, lifetime_.guard([this, index, round = round_](const auto *reply) {
            if (round != round_) {
                return;
            }
            if (reply == nullptr) {
                std::exchange(done_, nullptr)(false);
                return;
            }
            pixels_ = {};
            draw(pieces_[index], xcb_get_image_data(reply), 0);
            if (index + 1 < pieces_.size()) {
                fetchPlainly(index + 1);
            } else {
                finish();
            }
        }));
}

void CpuBlurRenderer::draw(const Piece &piece, const std::uint8_t *cells, std::size_t offset) {
    const auto &part = piece.pixels;
    const auto size = bytesOf(part.width, part.height);
    if (!pixels_) {
        plainPixels_.resize(size);
    }
    auto *pixels = pixels_ ? pixels_.bytes() + offset : plainPixels_.data();
    material_->render(part, cells, bytesOf(piece.cells.width, 1), pixels, bytesOf(part.width, 1));
    const auto to = staging_ ? staging_.id() : target_.canvasPixmap;
    const auto depth = staging_ ? cellDepth : target_.depth;
    if (pixels_) {
        xcb_shm_put_image(connection_, to, context_.id(), extent(part.width), extent(part.height),
                          0, 0, extent(part.width), extent(part.height), coordinate(part.x),
                          coordinate(part.y), depth, XCB_IMAGE_FORMAT_Z_PIXMAP, 0,
                          pixels_.segment(), static_cast<std::uint32_t>(offset));
    } else {
        putPlainly(part, to, depth);
    }
    if (staging_) {
        xcb_render_composite(connection_, XCB_RENDER_PICT_OP_SRC, stagingPicture_.id(), XCB_NONE,
                             target_.canvas, coordinate(part.x), coordinate(part.y), 0, 0,
                             coordinate(part.x), coordinate(part.y), extent(part.width),
                             extent(part.height));
    }
}

void CpuBlurRenderer::putPlainly(const drawing::PixelRect &part, xcb_pixmap_t to,
                                 std::uint8_t depth) {
    const auto rowBytes = bytesOf(part.width, 1);
    const auto most = static_cast<std::size_t>(xcb_get_maximum_request_length(connection_)) * 4 -
                      sizeof(xcb_put_image_request_t) - sizeof(std::uint32_t);
    const int rowsAtOnce = std::max(1, static_cast<int>(most / rowBytes));
    for (int row = 0; row < part.height; row += rowsAtOnce) {
        const int rows = std::min(rowsAtOnce, part.height - row);
        xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, to, context_.id(), extent(part.width),
                      extent(rows), coordinate(part.x), coordinate(part.y + row), 0, depth,
                      static_cast<std::uint32_t>(bytesOf(part.width, rows)),
                      plainPixels_.data() + static_cast<std::size_t>(row) * rowBytes);
    }
}

void CpuBlurRenderer::finish() {
    images_ = drawLayersOnto(target_.canvas, tools_, *appearance_, others_);
    layOver();
    for (const auto &hole : maskedOut_.rectangles()) {
        xcb_render_composite(connection_, XCB_RENDER_PICT_OP_SRC, target_.scene, XCB_NONE,
                             target_.canvas, coordinate(hole.x), coordinate(hole.y), 0, 0,
                             coordinate(hole.x), coordinate(hole.y), extent(hole.width),
                             extent(hole.height));
    }
    std::exchange(done_, nullptr)(true);
}

// What is not all opaque lets the scene through.
void CpuBlurRenderer::layOver() {
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

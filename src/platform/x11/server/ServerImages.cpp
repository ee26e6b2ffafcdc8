#include "platform/x11/server/ServerImages.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace lumo::x11 {

namespace {

constexpr std::size_t largestPiece = 1 << 20; // bytes
constexpr std::size_t serverPixelBytes = 4;

// Pixels from the first on, each a number with alpha in its highest byte and blue in its lowest.
Bytes inServerOrder(const Image &image, std::size_t first, std::size_t count, bool isLsbFirst) {
    Bytes result(count * serverPixelBytes);
    auto to = result.begin();
    for (std::size_t pixel = first; pixel < first + count; ++pixel) {
        const auto [red, green, blue, alpha] = image.rgbaAt(pixel);
        const std::array argb = {alpha, red, green, blue};
        to = isLsbFirst ? std::ranges::reverse_copy(argb, to).out : std::ranges::copy(argb, to).out;
    }
    return result;
}

} // namespace

ServerImages::ServerImages(Connection &connection)
    : connection_(connection) {
}

std::shared_ptr<const ServerImage> ServerImages::find(const std::shared_ptr<const Image> &image) {
    std::erase_if(entries_, [](const Entry &entry) { return entry.serverImage.expired(); });
    for (const auto &entry : entries_) {
        if (entry.image.lock() == image) {
            return entry.serverImage.lock();
        }
    }
    auto uploaded = upload(*image);
    if (uploaded) {
        entries_.push_back({image, uploaded});
    }
    return uploaded;
}

std::shared_ptr<const ServerImage> ServerImages::upload(const Image &image) {
    constexpr int largestPixmap = 32767;
    if (!image.isWhole() || image.width > largestPixmap || image.height > largestPixmap) {
        return nullptr;
    }
    const bool isLsbFirst = connection_.setup().image_byte_order == XCB_IMAGE_ORDER_LSB_FIRST;
    const auto width = static_cast<std::uint16_t>(image.width);
    auto result = std::make_shared<ServerImage>(
        ServerImage{OwnedPixmap(connection_), image.width, image.height});
    const auto pixmap = result->pixmap.id();
    xcb_create_pixmap(connection_, 32, pixmap, connection_.root(), width,
                      static_cast<std::uint16_t>(image.height));
    const OwnedGraphicsContext context(connection_);
    xcb_create_gc(connection_, context.id(), pixmap, 0, nullptr);

    // As much at a time as the server takes, and as does not need much memory here.
    const auto requestBytes = std::min(
        largestPiece, static_cast<std::size_t>(xcb_get_maximum_request_length(connection_)) * 4 -
                          sizeof(xcb_put_image_request_t) - sizeof(std::uint32_t));
    const auto rowPixels = static_cast<std::size_t>(image.width);
    const auto rowsAtOnce = std::max<std::size_t>(1, requestBytes / (rowPixels * serverPixelBytes));
    const auto height = static_cast<std::size_t>(image.height);
    for (std::size_t row = 0; row < height; row += rowsAtOnce) {
        const auto rows = std::min(rowsAtOnce, height - row);
        const auto pixels = inServerOrder(image, row * rowPixels, rows * rowPixels, isLsbFirst);
        xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, pixmap, context.id(), width,
                      static_cast<std::uint16_t>(rows), 0, static_cast<std::int16_t>(row), 0, 32,
                      static_cast<std::uint32_t>(pixels.size()), pixels.data());
    }
    return result;
}

} // namespace lumo::x11

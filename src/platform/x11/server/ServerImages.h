#pragma once

#include "platform/LayerTree.h"
#include "platform/x11/server/ServerResource.h"

#include <memory>
#include <vector>

namespace lumo::x11 {

class Connection;

// An image's pixels in the X server, in the format that RenderFormats::translucent() names.
struct ServerImage {
    OwnedPixmap pixmap;
    int width;
    int height;
};

// Sends each image to the server once, however many overlays show it. Main thread only.
class ServerImages {
  public:
    explicit ServerImages(Connection &connection);

    // The image in the server, kept there for as long as the result is held somewhere. Null for an
    // image without pixels.
    std::shared_ptr<const ServerImage> find(const std::shared_ptr<const Image> &image);

  private:
    struct Entry {
        std::weak_ptr<const Image> image;
        std::weak_ptr<const ServerImage> serverImage;
    };

    std::shared_ptr<const ServerImage> upload(const Image &image);

    Connection &connection_;
    std::vector<Entry> entries_;
};

} // namespace lumo::x11

#include "platform/x11/TextPicture.h"

#include <fontconfig/fontconfig.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <memory>
#include <vector>

namespace lumo::x11 {

namespace {

constexpr double fontSize = 13; // points, as are the paddings
constexpr double horizontalPadding = 8;
constexpr double verticalPadding = 5;

template <auto release>
struct Release {
    template <class T>
    void operator()(T *object) const noexcept {
        release(object);
    }
};

using Pattern = std::unique_ptr<FcPattern, Release<FcPatternDestroy>>;
using Library = std::unique_ptr<FT_LibraryRec_, Release<FT_Done_FreeType>>;
using Face = std::unique_ptr<FT_FaceRec_, Release<FT_Done_Face>>;

Pattern desktopFont() {
    const Pattern wanted(FcNameParse(reinterpret_cast<const FcChar8 *>("sans-serif")));
    if (!wanted || FcConfigSubstitute(nullptr, wanted.get(), FcMatchPattern) == FcFalse) {
        return nullptr;
    }
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultMatch;
    return Pattern(FcFontMatch(nullptr, wanted.get(), &result));
}

Face openFace(FT_Library library, double pixelSize) {
    const auto font = desktopFont();
    FcChar8 *file = nullptr;
    int index = 0;
    if (!font || FcPatternGetString(font.get(), FC_FILE, 0, &file) != FcResultMatch) {
        return nullptr;
    }
    FcPatternGetInteger(font.get(), FC_INDEX, 0, &index);
    FT_Face face = nullptr;
    if (FT_New_Face(library, reinterpret_cast<const char *>(file), index, &face) != 0) {
        return nullptr;
    }
    Face owned(face);
    const auto side = static_cast<FT_UInt>(std::lround(pixelSize));
    return FT_Set_Pixel_Sizes(face, 0, side) == 0 ? std::move(owned) : nullptr;
}

std::vector<FcChar32> codePoints(std::string_view text) {
    std::vector<FcChar32> result;
    while (!text.empty()) {
        FcChar32 point = 0;
        const int length = FcUtf8ToUcs4(reinterpret_cast<const FcChar8 *>(text.data()), &point,
                                        static_cast<int>(text.size()));
        if (length <= 0) {
            break;
        }
        result.push_back(point);
        text.remove_prefix(static_cast<std::size_t>(length));
    }
    return result;
}

// The font's measures are in 64ths of a pixel.
int pixels(FT_Pos measure) {
    return static_cast<int>((measure + 63) / 64);
}

int widthOf(FT_Face face, const std::vector<FcChar32> &text) {
    FT_Pos width = 0;
    for (const auto point : text) {
        if (FT_Load_Char(face, point, FT_LOAD_TARGET_LIGHT) == 0) {
            width += face->glyph->advance.x;
        }
    }
    return pixels(width);
}

std::array<std::uint8_t, 4> pixelOf(const Color &color, const Color &behind, double share) {
    const auto byte = [share](double above, double below) {
        return static_cast<std::uint8_t>(std::lround((above * share + below * (1 - share)) * 255));
    };
    return {byte(color.red, behind.red), byte(color.green, behind.green),
            byte(color.blue, behind.blue), 255};
}

// An image that is drawn into; what lies outside of it is dropped.
class Canvas {
  public:
    Canvas(int width, int height)
        : image_{width, height, Bytes(static_cast<std::size_t>(width * height) * 4)} {}

    void set(int x, int y, const std::array<std::uint8_t, 4> &pixel) {
        if (x >= 0 && y >= 0 && x < image_.width && y < image_.height) {
            const auto place = static_cast<std::ptrdiff_t>(y * image_.width + x) * 4;
            std::ranges::copy(pixel, image_.pixels.begin() + place);
        }
    }

    void fill(const TextColors &colors) {
        for (int y = 0; y < image_.height; ++y) {
            for (int x = 0; x < image_.width; ++x) {
                const bool isEdge =
                    x == 0 || y == 0 || x == image_.width - 1 || y == image_.height - 1;
                set(x, y, pixelOf(isEdge ? colors.border : colors.background, {}, 1));
            }
        }
    }

    Image take() { return std::move(image_); }

  private:
    Image image_;
};

void drawGlyph(Canvas &canvas, const FT_GlyphSlotRec_ &glyph, int x, int baseline,
               const TextColors &colors) {
    for (unsigned row = 0; row < glyph.bitmap.rows; ++row) {
        const auto *line =
            glyph.bitmap.buffer + static_cast<std::ptrdiff_t>(row) * glyph.bitmap.pitch;
        for (unsigned column = 0; column < glyph.bitmap.width; ++column) {
            if (line[column] != 0) {
                canvas.set(x + glyph.bitmap_left + static_cast<int>(column),
                           baseline - glyph.bitmap_top + static_cast<int>(row),
                           pixelOf(colors.text, colors.background, line[column] / 255.0));
            }
        }
    }
}

} // namespace

Image textPicture(std::string_view text, const TextColors &colors, double scale) {
    FT_Library started = nullptr;
    if (FT_Init_FreeType(&started) != 0) {
        return {};
    }
    const Library library(started);
    const auto face = openFace(started, fontSize * scale);
    if (!face) {
        return {};
    }
    const auto points = codePoints(text);
    const int left = static_cast<int>(std::lround(horizontalPadding * scale));
    const int top = static_cast<int>(std::lround(verticalPadding * scale));
    const auto &metrics = face->size->metrics;
    Canvas canvas(widthOf(face.get(), points) + 2 * left,
                  pixels(metrics.ascender - metrics.descender) + 2 * top);
    canvas.fill(colors);
    FT_Pos x = static_cast<FT_Pos>(left) * 64;
    for (const auto point : points) {
        if (FT_Load_Char(face.get(), point, FT_LOAD_TARGET_LIGHT | FT_LOAD_RENDER) == 0) {
            drawGlyph(canvas, *face->glyph, static_cast<int>(x / 64),
                      top + pixels(metrics.ascender), colors);
            x += face->glyph->advance.x;
        }
    }
    return canvas.take();
}

} // namespace lumo::x11

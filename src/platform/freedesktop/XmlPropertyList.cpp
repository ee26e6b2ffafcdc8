#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/PropertyList.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

namespace lumo::freedesktop {

namespace {

constexpr std::string_view header = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                                    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                                    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                                    "<plist version=\"1.0\">\n";
constexpr std::string_view footer = "</plist>\n";

constexpr std::string_view blanks = " \t\n\r";

constexpr double unixTimeOf2001 = 978307200; // seconds

constexpr std::array<std::string_view, 8> leaves{"key",  "string", "integer", "real",
                                                 "true", "false",  "data",    "date"};

std::string_view trimmed(std::string_view text) {
    const auto first = std::min(text.find_first_not_of(blanks), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

std::string_view withoutPlus(std::string_view text) {
    return text.starts_with('+') ? text.substr(1) : text;
}

std::optional<PropertyList> readInteger(std::string_view text) {
    const bool isHexadecimal = text.starts_with("0x") || text.starts_with("0X");
    text = isHexadecimal ? text.substr(2) : withoutPlus(text);
    std::int64_t number = 0;
    const auto *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number, isHexadecimal ? 16 : 10);
    if (error == std::errc::result_out_of_range && rest == end && !isHexadecimal) {
        return PropertyList{PropertyList::LargeInteger{std::string(text)}};
    }
    return error == std::errc{} && rest == end ? std::optional(PropertyList{number}) : std::nullopt;
}

std::optional<PropertyList> readReal(std::string_view text) {
    text = withoutPlus(text);
    double number = 0;
    const auto *end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    return error == std::errc{} && rest == end ? std::optional(PropertyList{number}) : std::nullopt;
}

std::optional<PropertyList> readDate(const std::string &text) {
    const GlibPointer<GDateTime> date(g_date_time_new_from_iso8601(text.c_str(), nullptr));
    if (!date) {
        return std::nullopt;
    }
    const auto fraction = static_cast<double>(g_date_time_get_microsecond(date.get())) / 1e6;
    const auto seconds = static_cast<double>(g_date_time_to_unix(date.get()));
    return PropertyList{PropertyList::Date{seconds + fraction - unixTimeOf2001}};
}

PropertyList readData(const std::string &text) {
    gsize size = 0;
    const GlibPointer<guchar> bytes(g_base64_decode(text.c_str(), &size));
    return {Bytes(bytes.get(), bytes.get() + size)};
}

std::optional<PropertyList> readLeaf(std::string_view element, const std::string &text) {
    if (element == "string") {
        return PropertyList{text};
    }
    if (element == "integer") {
        return readInteger(trimmed(text));
    }
    if (element == "real") {
        return readReal(trimmed(text));
    }
    if (element == "data") {
        return readData(text);
    }
    if (element == "date") {
        return readDate(std::string(trimmed(text)));
    }
    return PropertyList{element == "true"};
}

// Takes the elements of a document one by one, without recursion. Each function tells whether the
// document can still become a list.
class Builder {
  public:
    const std::string &problem() const { return problem_; }

    std::optional<PropertyList> takeList() { return std::move(list_); }

    bool begin(std::string_view element) {
        if (!leaf_.empty()) {
            return false;
        }
        if (element == "plist") {
            return open_.empty() && !list_;
        }
        if (std::ranges::find(leaves, element) != leaves.end()) {
            leaf_ = element;
            text_.clear();
            return true;
        }
        if (open_.size() == PropertyList::depthLimit) {
            problem_ = "nested too deeply";
            return false;
        }
        if (element == "array") {
            open_.push_back({{PropertyList::Array()}, {}});
        } else if (element == "dict") {
            open_.push_back({{PropertyList::Dictionary()}, {}});
        } else {
            return false;
        }
        return true;
    }

    bool end(std::string_view element) {
        if (element == "plist") {
            return true;
        }
        if (leaf_.empty()) {
            auto [container, key] = std::move(open_.back());
            open_.pop_back();
            return !key && add(std::move(container));
        }
        leaf_.clear();
        if (element == "key") {
            const bool isExpected =
                !open_.empty() && !open_.back().key &&
                std::holds_alternative<PropertyList::Dictionary>(open_.back().container.value);
            if (isExpected) {
                open_.back().key = text_;
            }
            return isExpected;
        }
        auto value = readLeaf(element, text_);
        return value && add(std::move(*value));
    }

    bool addText(std::string_view text) {
        if (leaf_.empty()) {
            return text.find_first_not_of(blanks) == std::string_view::npos;
        }
        text_ += text;
        return true;
    }

  private:
    struct Open {
        PropertyList container;
        std::optional<std::string> key; // of the entry whose value is to come
    };

    bool add(PropertyList value) {
        if (open_.empty()) {
            const bool isOnly = !list_;
            list_ = std::move(value);
            return isOnly;
        }
        auto &[container, key] = open_.back();
        if (auto *array = std::get_if<PropertyList::Array>(&container.value)) {
            array->push_back(std::move(value));
            return true;
        }
        if (!key) {
            return false;
        }
        std::get<PropertyList::Dictionary>(container.value)
            .insert_or_assign(*std::exchange(key, std::nullopt), std::move(value));
        return true;
    }

    std::vector<Open> open_;
    std::string leaf_; // the element that the text belongs to; empty outside of one
    std::string text_;
    std::optional<PropertyList> list_;
    std::string problem_ = "not a property list";
};

void failUnless(bool isRight, GError **error) {
    if (!isRight) {
        g_set_error_literal(error, G_MARKUP_ERROR, G_MARKUP_ERROR_INVALID_CONTENT, "");
    }
}

constexpr GMarkupParser parser{
    .start_element =
        [](GMarkupParseContext *, const gchar *element, const gchar **, const gchar **,
           gpointer builder,
           GError **error) { failUnless(static_cast<Builder *>(builder)->begin(element), error); },
    .end_element =
        [](GMarkupParseContext *, const gchar *element, gpointer builder, GError **error) {
            failUnless(static_cast<Builder *>(builder)->end(element), error);
        },
    .text =
        [](GMarkupParseContext *, const gchar *text, gsize size, gpointer builder, GError **error) {
            failUnless(static_cast<Builder *>(builder)->addText({text, size}), error);
        },
    .passthrough = nullptr,
    .error = nullptr};

class XmlPrinter {
  public:
    std::string take() { return std::move(text_); }

    void print(const PropertyList &list, std::size_t depth) {
        depth_ = depth;
        std::visit([this](const auto &value) { add(value); }, list.value);
    }

  private:
    void indent() { text_.append(depth_, '\t'); }

    void addLine(std::string_view line) {
        indent();
        text_.append(line).append("\n");
    }

    void addElement(std::string_view element, std::string_view content) {
        indent();
        text_.append("<").append(element).append(">").append(content).append("</");
        text_.append(element).append(">\n");
    }

    void addText(std::string_view element, std::string_view text) {
        std::string content;
        for (const char c : text) {
            switch (c) {
            case '&':
                content += "&amp;";
                break;
            case '<':
                content += "&lt;";
                break;
            case '>':
                content += "&gt;";
                break;
            case '\r': // which readers take for a line end otherwise
                content += "&#13;";
                break;
            default:
                content += c;
            }
        }
        addElement(element, content);
    }

    void add(bool value) { addLine(value ? "<true/>" : "<false/>"); }
    void add(std::int64_t value) { addElement("integer", std::to_string(value)); }
    void add(const PropertyList::LargeInteger &value) { addElement("integer", value.digits); }
    void add(double value) {
        std::array<char, 64> digits{};
        const auto end = std::to_chars(digits.begin(), digits.end(), value).ptr;
        addElement("real", {digits.data(), end});
    }
    void add(const std::string &value) { addText("string", value); }
    void add(const Bytes &value) {
        const GlibPointer<gchar> text(g_base64_encode(value.data(), value.size()));
        addElement("data", text.get());
    }
    void add(const PropertyList::Date &value) {
        const GlibPointer<GDateTime> start(g_date_time_new_utc(2001, 1, 1, 0, 0, 0));
        const GlibPointer<GDateTime> date(g_date_time_add_seconds(start.get(), value.seconds));
        const GlibPointer<gchar> text(g_date_time_format_iso8601(date ? date.get() : start.get()));
        addElement("date", text.get());
    }
    // XML has no such type; this is how its writers tell it.
    void add(const PropertyList::Uid &value) {
        add(PropertyList::Dictionary{{"CF$UID", {static_cast<std::int64_t>(value.number)}}});
    }
    void add(const PropertyList::Array &array) {
        const auto depth = depth_;
        addLine("<array>");
        for (const auto &item : array) {
            print(item, depth + 1);
        }
        depth_ = depth;
        addLine("</array>");
    }
    void add(const PropertyList::Dictionary &dictionary) {
        const auto depth = depth_;
        addLine("<dict>");
        for (const auto &[key, value] : dictionary) {
            depth_ = depth + 1;
            addText("key", key);
            print(value, depth + 1);
        }
        depth_ = depth;
        addLine("</dict>");
    }

    std::string text_;
    std::size_t depth_ = 0;
};

} // namespace

std::optional<PropertyList> readXmlPropertyList(std::string_view contents, std::string &problem) {
    Builder builder;
    const GlibPointer<GMarkupParseContext> context(
        g_markup_parse_context_new(&parser, G_MARKUP_TREAT_CDATA_AS_TEXT, &builder, nullptr));
    const bool isRead =
        g_markup_parse_context_parse(context.get(), contents.data(),
                                     static_cast<gssize>(contents.size()), nullptr) != FALSE &&
        g_markup_parse_context_end_parse(context.get(), nullptr) != FALSE;
    auto list = isRead ? builder.takeList() : std::nullopt;
    if (!list) {
        problem = builder.problem();
    }
    return list;
}

std::string printXmlPropertyList(const PropertyList &list) {
    XmlPrinter printer;
    printer.print(list, 0);
    return std::string(header) + printer.take() + std::string(footer);
}

} // namespace lumo::freedesktop

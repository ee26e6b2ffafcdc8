#include "platform/freedesktop/PropertyListUserDefaults.h"

#include "platform/MainLoop.h"
#include "platform/freedesktop/ConfigurationFolder.h"
#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/ProgramIdentity.h"
#include "support/Invariant.h"
#include "support/Log.h"

#include <glib.h>
#include <plist/plist.h>

#include <clocale>
#include <cstdlib>
#include <string>
#include <utility>

namespace lumo::freedesktop {

namespace {

// While it lives, numbers are read and printed on this thread as in C, with a point: libplist
// follows the locale.
class NumbersAsInC {
  public:
    NumbersAsInC()
        : own_(newlocale(LC_ALL_MASK, "C", nullptr))
        , previous_(uselocale(own_)) {}
    ~NumbersAsInC() {
        uselocale(previous_);
        freelocale(own_);
    }
    NumbersAsInC(const NumbersAsInC &) = delete;
    NumbersAsInC &operator=(const NumbersAsInC &) = delete;

  private:
    locale_t own_;
    locale_t previous_;
};

struct FreeText {
    void operator()(char *text) const { std::free(text); }
};

using Text = std::unique_ptr<char, FreeText>;

std::string stringOf(plist_t node) {
    char *text = nullptr;
    plist_get_string_val(node, &text);
    const Text owner(text);
    return text != nullptr ? text : "";
}

Bytes dataOf(plist_t node) {
    char *bytes = nullptr;
    std::uint64_t size = 0;
    plist_get_data_val(node, &bytes, &size);
    const Text owner(bytes);
    return bytes != nullptr ? Bytes(bytes, bytes + size) : Bytes();
}

std::optional<Value> valueOf(plist_t node) {
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return value != 0;
    }
    case PLIST_UINT: { // negative numbers too
        std::uint64_t value = 0;
        plist_get_uint_val(node, &value);
        return static_cast<std::int64_t>(value);
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return value;
    }
    case PLIST_STRING:
        return stringOf(node);
    case PLIST_DATA:
        return dataOf(node);
    default:
        return std::nullopt;
    }
}

plist_t makeNode(const Value &value) {
    if (const auto boolean = value.boolean()) {
        return plist_new_bool(*boolean ? 1 : 0);
    }
    if (const auto integer = value.integer()) {
        return plist_new_uint(static_cast<std::uint64_t>(*integer));
    }
    if (const auto real = value.real()) {
        return plist_new_real(*real);
    }
    if (const auto *string = value.string()) {
        return plist_new_string(string->c_str());
    }
    const auto *data = value.data();
    require(data != nullptr, "user defaults hold no dictionaries of their own");
    return plist_new_data(reinterpret_cast<const char *>(data->data()), data->size());
}

std::string printableInXml(const std::string &text) {
    const GlibPointer<gchar> valid(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
    std::string result;
    for (const gchar *at = valid.get(); *at != '\0'; ++at) {
        const bool isControl = static_cast<unsigned char>(*at) < ' ';
        if (isControl && *at != '\t' && *at != '\n' && *at != '\r') {
            result += "\uFFFD";
        } else {
            result += *at;
        }
    }
    return result;
}

} // namespace

void PropertyListUserDefaults::FreePropertyList::operator()(void *list) const {
    plist_free(list);
}

std::optional<std::filesystem::path> PropertyListUserDefaults::standardFile() {
    auto folder = userConfigurationFolder();
    return folder ? std::optional(*folder / "lumo" / (std::string(program::identifier) + ".plist"))
                  : std::nullopt;
}

PropertyListUserDefaults::PropertyListUserDefaults(const std::optional<std::filesystem::path> &file,
                                                   MainLoop &mainLoop, Log &log)
    : mainLoop_(mainLoop)
    , log_(log)
    , root_(plist_new_dict()) {
    if (file) {
        file_.emplace(*file);
        load();
    } else {
        log_.print("[Lumo] There is no home folder: settings are kept in memory only.");
    }
}

PropertyListUserDefaults::~PropertyListUserDefaults() {
    flush();
}

void PropertyListUserDefaults::load() {
    std::error_code error;
    const auto contents = file_->read(error);
    if (error) {
        giveUpFile(error.message());
    }
    if (!contents) {
        return;
    }
    plist_t list = nullptr;
    {
        const NumbersAsInC numbers;
        plist_from_memory(contents->data(), static_cast<std::uint32_t>(contents->size()), &list);
    }
    PropertyList owner(list);
    if (list == nullptr) {
        giveUpFile("not a property list");
    } else if (plist_get_node_type(list) != PLIST_DICT) {
        giveUpFile("not a dictionary");
    } else {
        root_ = std::move(owner);
    }
}

void PropertyListUserDefaults::giveUpFile(const std::string &reason) {
    std::error_code error;
    const auto newName = file_->setAside(error);
    std::string line =
        "[Lumo] The settings in " + file_->path().string() + " can't be read (" + reason + "): ";
    if (error) {
        line += "they can't be set aside either (" + error.message() +
                "), so settings are kept in memory only.";
        file_.reset();
    } else {
        line += "they were set aside as " + newName.string() + ", and the defaults apply.";
    }
    log_.print(line);
}

std::optional<Value> PropertyListUserDefaults::object(std::string_view key) const {
    const auto node = plist_dict_get_item(root_.get(), std::string(key).c_str());
    return node != nullptr ? valueOf(node) : std::nullopt;
}

void PropertyListUserDefaults::set(std::string_view key, const Value &value) {
    if (object(key) != value) {
        plist_dict_set_item(root_.get(), std::string(key).c_str(), makeNode(value));
        changed();
    }
}

void PropertyListUserDefaults::setBool(std::string_view key, bool value) {
    set(key, value);
}

void PropertyListUserDefaults::setInteger(std::string_view key, std::int64_t value) {
    set(key, value);
}

void PropertyListUserDefaults::setDouble(std::string_view key, double value) {
    set(key, value);
}

void PropertyListUserDefaults::setString(std::string_view key, const std::string &value) {
    set(key, printableInXml(value));
}

void PropertyListUserDefaults::setData(std::string_view key, const Bytes &value) {
    set(key, value);
}

void PropertyListUserDefaults::removeObject(std::string_view key) {
    const std::string name(key);
    if (plist_dict_get_item(root_.get(), name.c_str()) != nullptr) {
        plist_dict_remove_item(root_.get(), name.c_str());
        changed();
    }
}

void PropertyListUserDefaults::changed() {
    hasUnwritten_ = true;
    if (!isFlushPosted_) {
        isFlushPosted_ = true;
        mainLoop_.post(lifetime_.guard([this] {
            isFlushPosted_ = false;
            flush();
        }));
    }
}

void PropertyListUserDefaults::flush() {
    if (!hasUnwritten_ || !file_) {
        return;
    }
    char *xml = nullptr;
    std::uint32_t size = 0;
    {
        const NumbersAsInC numbers;
        plist_to_xml(root_.get(), &xml, &size);
    }
    const Text owner(xml);
    require(xml != nullptr, "a property list can be printed");
    const auto error = file_->replace({xml, size});
    if (error && !lastWriteFailed_) {
        log_.print("[Lumo] Settings can't be written to " + file_->path().string() + " (" +
                   error.message() + "): they are kept in memory for now.");
    }
    hasUnwritten_ = lastWriteFailed_ = static_cast<bool>(error);
}

} // namespace lumo::freedesktop

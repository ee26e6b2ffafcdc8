#include "platform/freedesktop/PropertyListUserDefaults.h"

#include "platform/MainLoop.h"
#include "platform/freedesktop/ConfigurationFolder.h"
#include "platform/freedesktop/FileWatch.h"
#include "platform/freedesktop/GlibPointers.h"
#include "platform/freedesktop/ProgramIdentity.h"
#include "support/Log.h"

#include <glib.h>

#include <chrono>
#include <limits>
#include <string>
#include <thread>
#include <utility>

namespace lumo::freedesktop {

namespace {

constexpr double pauseBeforeReading = 0.1; // seconds: a change of the file comes in several events
constexpr double pauseBetweenAttempts = 0.1; // seconds
constexpr int vainAttemptsBeforeReport = 10;
constexpr auto longestWaitAtTheEnd = std::chrono::seconds(1);

struct ToValue {
    std::optional<Value> operator()(bool value) const { return value; }
    std::optional<Value> operator()(std::int64_t value) const { return value; }
    std::optional<Value> operator()(const PropertyList::LargeInteger &value) const {
        using Limits = std::numeric_limits<std::int64_t>;
        return value.digits.starts_with('-') ? Limits::min() : Limits::max();
    }
    std::optional<Value> operator()(double value) const { return value; }
    std::optional<Value> operator()(const std::string &value) const { return value; }
    std::optional<Value> operator()(const Bytes &value) const { return value; }
    template <class Other>
    std::optional<Value> operator()(const Other & /*value*/) const {
        return std::nullopt;
    }
};

std::string validUtf8(std::string_view text) {
    std::string result;
    while (true) {
        const auto piece = text.substr(0, text.find('\0'));
        const GlibPointer<gchar> valid(
            g_utf8_make_valid(piece.data(), static_cast<gssize>(piece.size())));
        result += valid.get();
        if (piece.size() == text.size()) {
            return result;
        }
        result += '\0';
        text.remove_prefix(piece.size() + 1);
    }
}

bool isTurnOfAnother(const std::error_code &error) {
    return error == std::errc::resource_unavailable_try_again;
}

} // namespace

std::optional<std::filesystem::path> PropertyListUserDefaults::standardFile() {
    auto folder = userConfigurationFolder();
    return folder ? std::optional(*folder / "lumo" / (std::string(program::identifier) + ".plist"))
                  : std::nullopt;
}

PropertyListUserDefaults::PropertyListUserDefaults(const std::optional<std::filesystem::path> &file,
                                                   MainLoop &mainLoop, Log &log)
    : mainLoop_(mainLoop)
    , log_(log) {
    if (file) {
        file_.emplace(*file);
        load();
    } else {
        log_.print("[Lumo] There is no home folder: settings are kept in memory only.");
    }
    watch();
}

PropertyListUserDefaults::~PropertyListUserDefaults() {
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + longestWaitAtTheEnd;
    std::error_code error;
    while (!isWritten() && isTurnOfAnother(error = write()) && Clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    if (error) {
        reportFailure(error, "the last changes are lost.");
    }
}

PropertyListUserDefaults::Contents PropertyListUserDefaults::read() const {
    std::error_code error;
    auto text = file_->read(error);
    if (error) {
        const bool isForbidden = error == std::errc::permission_denied;
        return {isForbidden ? Found::unreadable : Found::noList, {}, {}, error.message()};
    }
    if (!text) {
        return {};
    }
    Contents contents{Found::noList, std::move(*text), {}, {}};
    auto list = readPropertyList(contents.text, contents.problem);
    if (auto *values = list ? std::get_if<Dictionary>(&list->value) : nullptr) {
        contents.found = Found::values;
        contents.values = std::move(*values);
    } else if (list) {
        contents.problem = "not a dictionary";
    }
    return contents;
}

void PropertyListUserDefaults::load() {
    lastSeen_ = read();
    switch (lastSeen_.found) {
    case Found::nothing:
        break;
    case Found::values:
        format_ = propertyListFormat(lastSeen_.text);
        values_ = std::exchange(lastSeen_.values, {});
        break;
    case Found::noList:
        giveUpFile(lastSeen_.problem);
        break;
    case Found::unreadable:
        log_.print("[Lumo] The settings in " + file_->path().string() + " can't be read (" +
                   lastSeen_.problem +
                   "): they stay as they are, and the defaults apply for this run.");
        file_.reset();
        break;
    }
}

void PropertyListUserDefaults::giveUpFile(const std::string &reason) {
    std::error_code error;
    const auto newName = file_->setAside(error);
    std::string line =
        "[Lumo] The settings in " + file_->path().string() + " can't be read (" + reason + "): ";
    lastSeen_ = {};
    if (error == std::errc::no_such_file_or_directory) {
        line += "another instance has set them aside.";
    } else if (error) {
        line += "they can't be set aside either (" + error.message() +
                "), so settings are kept in memory only.";
        file_.reset();
    } else {
        line += "they were set aside as " + newName.string() + ", and " +
                (values_.empty() ? "the defaults apply." : "those in force are written.");
    }
    log_.print(line);
}

void PropertyListUserDefaults::watch() {
    if (!file_) {
        return;
    }
    std::error_code error;
    auto target = file_->target(error);
    if (error || target == watchedTarget_) {
        return;
    }
    const auto noteEvent = [this] { scheduleReload(); };
    watches_ = {watchFile(file_->path(), noteEvent),
                target != file_->path() ? watchFile(target, noteEvent) : Handle()};
    watchedTarget_ = std::move(target);
}

void PropertyListUserDefaults::scheduleReload() {
    if (!nextReload_) {
        nextReload_ = mainLoop_.after(pauseBeforeReading, lifetime_.guard([this] {
            nextReload_.reset();
            reload();
        }));
    }
}

void PropertyListUserDefaults::reload() {
    if (!file_) {
        return;
    }
    watch();
    auto contents = read();
    if (contents.isSameAs(lastSeen_)) {
        return;
    }
    auto values = std::exchange(contents.values, {});
    lastSeen_ = std::move(contents);
    switch (lastSeen_.found) {
    case Found::nothing: // an editor may be about to put another one there
        break;
    case Found::values:
        format_ = propertyListFormat(lastSeen_.text);
        adopt(withUnwritten(std::move(values)));
        break;
    case Found::noList:
    case Found::unreadable:
        log_.print("[Lumo] The settings in " + file_->path().string() +
                   " were changed and can't be read (" + lastSeen_.problem +
                   "): those in force stay.");
        break;
    }
}

PropertyListUserDefaults::Dictionary
PropertyListUserDefaults::withUnwritten(Dictionary values) const {
    for (const auto &[key, value] : unwritten_) {
        if (value) {
            values.insert_or_assign(key, *value);
        } else {
            values.erase(key);
        }
    }
    return values;
}

// Puts the values in force, and announces what of it is new.
void PropertyListUserDefaults::adopt(Dictionary values) {
    std::vector<std::string> keys;
    for (const auto &[key, value] : values) {
        const auto old = values_.find(key);
        if (old == values_.end() || old->second != value) {
            keys.push_back(key);
        }
    }
    for (const auto &[key, value] : values_) {
        if (!values.contains(key)) {
            keys.push_back(key);
        }
    }
    values_ = std::move(values);
    if (!keys.empty()) {
        changedByOthers_.emit(keys);
    }
}

std::optional<Value> PropertyListUserDefaults::object(std::string_view key) const {
    const auto found = values_.find(key);
    return found != values_.end() ? std::visit(ToValue(), found->second.value) : std::nullopt;
}

void PropertyListUserDefaults::set(std::string_view key, PropertyList value) {
    const auto found = values_.find(key);
    if (found == values_.end() || found->second != value) {
        values_.insert_or_assign(std::string(key), value);
        changed(key, std::move(value));
    }
}

void PropertyListUserDefaults::setBool(std::string_view key, bool value) {
    set(key, {value});
}

void PropertyListUserDefaults::setInteger(std::string_view key, std::int64_t value) {
    set(key, {value});
}

void PropertyListUserDefaults::setDouble(std::string_view key, double value) {
    set(key, {value});
}

void PropertyListUserDefaults::setString(std::string_view key, const std::string &value) {
    set(key, {validUtf8(value)});
}

void PropertyListUserDefaults::setData(std::string_view key, const Bytes &value) {
    set(key, {value});
}

void PropertyListUserDefaults::removeObject(std::string_view key) {
    if (const auto found = values_.find(key); found != values_.end()) {
        values_.erase(found);
        changed(key, std::nullopt);
    }
}

Handle PropertyListUserDefaults::onChangeByOthers(
    std::function<void(const std::vector<std::string> &)> observer) {
    return changedByOthers_.subscribe(std::move(observer));
}

void PropertyListUserDefaults::changed(std::string_view key, std::optional<PropertyList> value) {
    unwritten_.insert_or_assign(std::string(key), std::move(value));
    if (!isFlushPosted_) {
        isFlushPosted_ = true;
        mainLoop_.post(lifetime_.guard([this] {
            isFlushPosted_ = false;
            flush();
        }));
    }
}

// A file that others broke is replaced at the end, if not before: what was in force is there again
// at the next start.
bool PropertyListUserDefaults::isWritten() const {
    return !file_ || (unwritten_.empty() && lastSeen_.found != Found::noList);
}

void PropertyListUserDefaults::flush() {
    if (!file_ || unwritten_.empty()) {
        return;
    }
    const auto error = write();
    if (isTurnOfAnother(error)) {
        tryAgainLater(error);
        return;
    }
    vainAttempts_ = 0;
    if (error && !lastWriteFailed_) {
        reportFailure(error, "they are kept in memory for now.");
    }
    lastWriteFailed_ = static_cast<bool>(error);
}

void PropertyListUserDefaults::tryAgainLater(const std::error_code &error) {
    if (nextAttempt_) {
        return;
    }
    if (++vainAttempts_ == vainAttemptsBeforeReport) {
        reportFailure(error, "another process has locked its temporary file, so they are kept in "
                             "memory for now.");
    }
    nextAttempt_ = mainLoop_.after(pauseBetweenAttempts, lifetime_.guard([this] {
        nextAttempt_.reset();
        flush();
    }));
}

void PropertyListUserDefaults::reportFailure(const std::error_code &error,
                                             std::string_view consequence) {
    log_.print("[Lumo] Settings can't be written to " + file_->path().string() + " (" +
               error.message() + "): " + std::string(consequence));
}

std::error_code PropertyListUserDefaults::write() {
    std::error_code error;
    auto turn = file_->takeTurn(error);
    if (!turn) {
        return error;
    }
    auto contents = read();
    if (contents.found == Found::unreadable) {
        return make_error_code(std::errc::permission_denied);
    }
    if (contents.found == Found::noList) {
        if (!contents.isSameAs(lastSeen_)) { // an editor may be about to write the rest of it
            lastSeen_ = std::move(contents);
            return make_error_code(std::errc::resource_unavailable_try_again);
        }
        giveUpFile(contents.problem);
        if (!file_) {
            return {};
        }
    }
    const bool isThere = contents.found == Found::values;
    if (isThere) {
        format_ = propertyListFormat(contents.text);
    }
    auto next = isThere ? withUnwritten(contents.values) : values_;
    if (!isThere || next != contents.values) {
        contents.text = printPropertyList({next}, format_);
        if (error = turn->replace(contents.text); error) {
            return error;
        }
    }
    lastSeen_ = {Found::values, std::move(contents.text), {}, {}};
    unwritten_.clear();
    watch();
    adopt(std::move(next));
    return {};
}

} // namespace lumo::freedesktop

#pragma once

#include "platform/UserDefaults.h"
#include "platform/freedesktop/AtomicFile.h"
#include "platform/freedesktop/PropertyList.h"
#include "support/Lifetime.h"
#include "support/Signal.h"

#include <array>
#include <filesystem>
#include <map>
#include <optional>

namespace lumo {
class Log;
class MainLoop;
} // namespace lumo

namespace lumo::freedesktop {

// User defaults in a property list, XML or binary as it is found. All that is set within one turn
// of the main loop is written at once, by replacing the whole file: the values that were set here,
// over all else that the file holds then, of any type. What other programs write there is taken in
// while this lives.
//
// A file that is no property list when this is made is set aside under another name, and the
// defaults start empty; one that becomes so later changes nothing, and is set aside when something
// is to be written. A file that must not be read stays where it is, and nothing is written over it.
// While writing fails the values are kept in memory, and are tried again with the next change and
// at the end; while another process holds the right to write, every tenth of a second. Each is one
// line in the log.
class PropertyListUserDefaults final : public UserDefaults {
  public:
    // The file in the user's configuration folder; absent when there is no such folder.
    static std::optional<std::filesystem::path> standardFile();

    // Reads the file, and makes its folder. Without a file, everything is kept in memory only.
    PropertyListUserDefaults(const std::optional<std::filesystem::path> &file, MainLoop &mainLoop,
                             Log &log);
    // Writes what has not been written yet; waits a second for the right to, at most.
    ~PropertyListUserDefaults() override;
    PropertyListUserDefaults(const PropertyListUserDefaults &) = delete;
    PropertyListUserDefaults &operator=(const PropertyListUserDefaults &) = delete;

    // Dates, arrays, dictionaries and all else that is no Value are absent; a whole number that is
    // too large is the nearest that fits.
    std::optional<Value> object(std::string_view key) const override;

    void setBool(std::string_view key, bool value) override;
    void setInteger(std::string_view key, std::int64_t value) override;
    void setDouble(std::string_view key, double value) override;
    // Bytes that are not UTF-8 are replaced by U+FFFD.
    void setString(std::string_view key, const std::string &value) override;
    void setData(std::string_view key, const Bytes &value) override;
    void removeObject(std::string_view key) override;

    Handle
    onChangeByOthers(std::function<void(const std::vector<std::string> &keys)> observer) override;

    // Writes now what has not been written yet, unless another process holds the right to write.
    void flush();

  private:
    using Dictionary = PropertyList::Dictionary;

    // What was found at the file's place.
    enum class Found { nothing, values, noList, unreadable };
    struct Contents {
        Found found = Found::nothing;
        std::string text;
        Dictionary values;
        std::string problem; // with the last two

        bool isSameAs(const Contents &other) const {
            return found == other.found && text == other.text && problem == other.problem;
        }
    };

    Contents read() const;
    void load();
    void giveUpFile(const std::string &reason);
    void watch();
    void scheduleReload();
    void reload();
    Dictionary withUnwritten(Dictionary values) const;
    void adopt(Dictionary values);
    void set(std::string_view key, PropertyList value);
    void changed(std::string_view key, std::optional<PropertyList> value);
    bool isWritten() const;
    std::error_code write();
    void tryAgainLater(const std::error_code &error);
    void reportFailure(const std::error_code &error, std::string_view consequence);

    MainLoop &mainLoop_;
    Log &log_;
    std::optional<AtomicFile> file_; // absent while everything is kept in memory only
    PropertyListFormat format_ = PropertyListFormat::xml;
    Contents lastSeen_; // in the file, without the values
    Dictionary values_; // in force
    std::map<std::string, std::optional<PropertyList>, std::less<>> unwritten_; // absent: removed
    bool isFlushPosted_ = false;
    int vainAttempts_ = 0; // to get the right to write, in a row
    bool lastWriteFailed_ = false;
    Signal<std::vector<std::string>> changedByOthers_;
    std::filesystem::path watchedTarget_;
    std::array<Handle, 2> watches_; // of the file, and of what it is a link to
    Handle nextReload_;
    Handle nextAttempt_;
    Lifetime lifetime_;
};

} // namespace lumo::freedesktop

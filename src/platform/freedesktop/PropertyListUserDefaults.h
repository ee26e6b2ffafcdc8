#pragma once

#include "platform/UserDefaults.h"
#include "platform/freedesktop/AtomicFile.h"
#include "support/Lifetime.h"

#include <filesystem>
#include <memory>
#include <optional>

namespace lumo {
class Log;
class MainLoop;
} // namespace lumo

namespace lumo::freedesktop {

// User defaults in an XML property list. All that is set within one turn of the main loop is
// written at once, by replacing the whole file; what the file holds besides, of any type,
// stays in it.
//
// A file that can't be read, or is no property list, is set aside under another name and the
// defaults start empty. While writing fails they are kept in memory, and are tried again with the
// next change and at the end. Either is one line in the log.
class PropertyListUserDefaults final : public UserDefaults {
  public:
    // The file in the user's configuration folder; absent when there is no such folder.
    static std::optional<std::filesystem::path> standardFile();

    // Reads the file. Without one, everything is kept in memory only.
    PropertyListUserDefaults(const std::optional<std::filesystem::path> &file, MainLoop &mainLoop,
                             Log &log);
    // Writes what has not been written yet.
    ~PropertyListUserDefaults() override;
    PropertyListUserDefaults(const PropertyListUserDefaults &) = delete;
    PropertyListUserDefaults &operator=(const PropertyListUserDefaults &) = delete;

    // Dates, arrays, dictionaries and all else that is no Value are absent.
    std::optional<Value> object(std::string_view key) const override;

    void setBool(std::string_view key, bool value) override;
    void setInteger(std::string_view key, std::int64_t value) override;
    void setDouble(std::string_view key, double value) override;
    // What XML can't hold (control characters, bytes that are not UTF-8) is replaced by U+FFFD.
    void setString(std::string_view key, const std::string &value) override;
    void setData(std::string_view key, const Bytes &value) override;
    void removeObject(std::string_view key) override;

    // Writes now what has not been written yet.
    void flush();

  private:
    struct FreePropertyList {
        void operator()(void *list) const;
    };
    using PropertyList = std::unique_ptr<void, FreePropertyList>;

    void load();
    void giveUpFile(const std::string &reason);
    void set(std::string_view key, const Value &value);
    void changed();

    MainLoop &mainLoop_;
    Log &log_;
    std::optional<AtomicFile> file_; // absent while everything is kept in memory only
    PropertyList root_;              // a dictionary
    bool hasUnwritten_ = false;
    bool isFlushPosted_ = false;
    bool lastWriteFailed_ = false;
    Lifetime lifetime_;
};

} // namespace lumo::freedesktop

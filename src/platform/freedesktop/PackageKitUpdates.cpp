#include "platform/freedesktop/PackageKitUpdates.h"

#include "platform/freedesktop/AsyncCalls.h"
#include "platform/freedesktop/GlibSignal.h"
#include "platform/freedesktop/SessionBus.h"
#include "support/Handle.h"

#include <gio/gio.h>

#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace lumo::freedesktop {

namespace {

constexpr const char *packageKitName = "org.freedesktop.PackageKit";
constexpr const char *packageKitPath = "/org/freedesktop/PackageKit";
constexpr const char *transactionInterface = "org.freedesktop.PackageKit.Transaction";

constexpr double longestCheck = 120; // seconds; the service may have to fetch lists

// Bits of PackageKit's filters.
constexpr guint64 filterNone = 1U << 1U;
constexpr guint64 filterInstalled = 1U << 2U;
constexpr guint32 exitSuccess = 1;

} // namespace

// One check on its way: first a transaction that finds the package of the file, then one that lists
// the updates there are.
class PackageKitUpdates::Check {
  public:
    using Completion = std::function<void(const UpdateResult &)>;

    Check(MainLoop &mainLoop, std::string file, Completion completion)
        : file_(std::move(file))
        , completion_(std::move(completion))
        , timeout_(mainLoop.after(longestCheck, [this] { finish(); })) {
        // A connection of its own: the shared one is handed out even when it is closed.
        const GlibPointer<char> address(
            g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SYSTEM, nullptr, nullptr));
        connectToBus(calls_, address.get(),
                     [this](GlibPointer<GDBusConnection> connection, const auto & /*error*/) {
                         connected(std::move(connection));
                     });
    }
    Check(const Check &) = delete;
    Check &operator=(const Check &) = delete;

    bool isUnderWay() const { return completion_ != nullptr; }

  private:
    // The fields of a package identifier: name;version;architecture;origin.
    struct Package {
        std::string name;
        std::string version;
    };

    static Package packageOf(std::string_view identifier) {
        const auto nameEnd = identifier.find(';');
        const auto versionEnd =
            nameEnd == std::string_view::npos ? nameEnd : identifier.find(';', nameEnd + 1);
        if (nameEnd == std::string_view::npos) {
            return {std::string(identifier), {}};
        }
        return {std::string(identifier.substr(0, nameEnd)),
                std::string(identifier.substr(nameEnd + 1, versionEnd - nameEnd - 1))};
    }

    void connected(GlibPointer<GDBusConnection> connection) {
        if (!connection) {
            finish();
            return;
        }
        bus_ = std::move(connection);
        g_dbus_connection_set_exit_on_close(bus_.get(), FALSE);
        const auto closed = +[](GDBusConnection *, gboolean, GError *, gpointer self) {
            static_cast<Check *>(self)->finish();
        };
        closed_ = connectToSignal(bus_.get(), "closed", G_CALLBACK(closed), this);
        createTransaction();
    }

    // Calls a method of the service; without a reply the check is over.
    void call(const char *path, const char *interface, const char *method, GVariant *arguments,
              const char *replyType, const std::function<void(GVariant *reply)> &finished) {
        calls_.start(
            [this, finished](GObject *, GAsyncResult *result) {
                const GlibPointer<GVariant> reply(
                    g_dbus_connection_call_finish(bus_.get(), result, nullptr));
                if (reply) {
                    finished(reply.get());
                } else {
                    finish();
                }
            },
            g_dbus_connection_call, bus_.get(), packageKitName, path, interface, method, arguments,
            G_VARIANT_TYPE(replyType), G_DBUS_CALL_FLAGS_NONE, longestCall);
    }

    void createTransaction() {
        call(packageKitPath, packageKitName, "CreateTransaction", nullptr, "(o)",
             [this](GVariant *reply) {
                 const char *path = nullptr;
                 g_variant_get(reply, "(&o)", &path);
                 listen(path);
                 ask(path);
             });
    }

    void listen(const char *path) {
        const auto received = +[](GDBusConnection *, const char *, const char *, const char *,
                                  const char *signal, GVariant *parameters, gpointer data) {
            static_cast<Check *>(data)->handleSignal(signal, parameters);
        };
        const auto subscription = g_dbus_connection_signal_subscribe(
            bus_.get(), packageKitName, transactionInterface, nullptr, path, nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE, received, this, nullptr);
        signals_ = Handle([bus = bus_.get(), subscription] {
            g_dbus_connection_signal_unsubscribe(bus, subscription);
        });
    }

    void ask(const char *path) {
        const auto nothing = [](GVariant *) {};
        if (own_) {
            call(path, transactionInterface, "GetUpdates", g_variant_new("(t)", filterNone), "()",
                 nothing);
        } else {
            const std::array<const char *, 2> files{file_.c_str(), nullptr};
            call(path, transactionInterface, "SearchFiles",
                 g_variant_new("(t^as)", filterInstalled, files.data()), "()", nothing);
        }
    }

    void handleSignal(std::string_view signal, GVariant *parameters) {
        if (signal == "Package" &&
            g_variant_is_of_type(parameters, G_VARIANT_TYPE("(uss)")) != FALSE) {
            const char *identifier = nullptr;
            g_variant_get_child(parameters, 1, "&s", &identifier);
            handlePackage(packageOf(identifier));
        } else if (signal == "Finished" &&
                   g_variant_is_of_type(parameters, G_VARIANT_TYPE("(uu)")) != FALSE) {
            guint32 exit = 0;
            g_variant_get_child(parameters, 0, "u", &exit);
            handleFinished(exit == exitSuccess);
        } else if (signal == "Destroy") {
            finish();
        }
    }

    void handlePackage(Package package) {
        if (!isListing_) {
            own_ = std::move(package);
        } else if (package.name == own_->name) {
            newer_ = std::move(package.version);
        }
    }

    void handleFinished(bool succeeded) {
        signals_.reset(); // all that is left to come is that the transaction goes
        if (!succeeded) {
            finish();
        } else if (!own_) {
            finish({UpdateResult::Kind::notInstalledByPackage, {}});
        } else if (!std::exchange(isListing_, true)) {
            createTransaction();
        } else if (newer_) {
            finish({UpdateResult::Kind::newerVersion, *newer_});
        } else {
            finish({UpdateResult::Kind::upToDate, {}});
        }
    }

    // The completion may destroy the check.
    void finish(const UpdateResult &result = {UpdateResult::Kind::serviceUnavailable, {}}) {
        closed_.reset();
        signals_.reset();
        timeout_.reset();
        calls_.cancel();
        bus_.reset();
        const auto completion = std::exchange(completion_, nullptr);
        completion(result);
    }

    std::string file_;
    Completion completion_; // none once it was called
    GlibPointer<GDBusConnection> bus_;
    std::optional<Package> own_;
    std::optional<std::string> newer_;
    bool isListing_ = false;
    Handle closed_;
    Handle signals_;
    Handle timeout_;
    AsyncCalls calls_;
};

PackageKitUpdates::PackageKitUpdates(MainLoop &mainLoop, std::string file)
    : mainLoop_(mainLoop)
    , file_(std::move(file)) {
}

PackageKitUpdates::~PackageKitUpdates() = default;

void PackageKitUpdates::checkForUpdates(std::function<void(const UpdateResult &)> completion) {
    // A second request while a check is under way wants the same answer.
    if (!check_ || !check_->isUnderWay()) {
        check_ = std::make_unique<Check>(mainLoop_, file_, std::move(completion));
    }
}

} // namespace lumo::freedesktop

#include "platform/freedesktop/PackageKitUpdates.h"

#include "platform/freedesktop/GlibPointers.h"
#include "support/Handle.h"

#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace lumo::freedesktop {

namespace {

constexpr const char *serviceName = "org.freedesktop.PackageKit";
constexpr const char *servicePath = "/org/freedesktop/PackageKit";
constexpr const char *transactionInterface = "org.freedesktop.PackageKit.Transaction";

constexpr int longestCall = 10000;   // milliseconds
constexpr double longestCheck = 120; // seconds; the service may have to fetch lists

// Bits of PackageKit's filters.
constexpr guint64 filterNone = 1U << 1U;
constexpr guint64 filterInstalled = 1U << 2U;
constexpr guint32 exitSuccess = 1;

// The fields of a package identifier: name;version;architecture;origin.
struct Package {
    std::string name;
    std::string version;
};

Package packageOf(std::string_view identifier) {
    const auto nameEnd = identifier.find(';');
    const auto versionEnd =
        nameEnd == std::string_view::npos ? nameEnd : identifier.find(';', nameEnd + 1);
    if (nameEnd == std::string_view::npos) {
        return {std::string(identifier), {}};
    }
    return {std::string(identifier.substr(0, nameEnd)),
            std::string(identifier.substr(nameEnd + 1, versionEnd - nameEnd - 1))};
}

} // namespace

// One check on its way: first a transaction that finds the package of the file, then one that lists
// the updates there are. Kept alive by what it waits for.
class PackageKitUpdates::Check : public std::enable_shared_from_this<Check> {
  public:
    using Completion = std::function<void(const UpdateResult &)>;

    Check(MainLoop &mainLoop, std::string file, GCancellable *cancellable, Completion completion)
        : mainLoop_(mainLoop)
        , file_(std::move(file))
        , cancellable_(G_CANCELLABLE(g_object_ref(cancellable)))
        , completion_(std::move(completion)) {}
    ~Check() { forgetSignals(); }
    Check(const Check &) = delete;
    Check &operator=(const Check &) = delete;

    bool isUnderWay() const { return completion_ != nullptr; }

    void begin() {
        timeout_ = mainLoop_.after(longestCheck, [this] { finish(); });
        g_bus_get(G_BUS_TYPE_SYSTEM, cancellable_.get(), answered<&Check::connected>(), hold());
    }

  private:
    using Held = std::shared_ptr<Check>;

    Held *hold() { return new Held(shared_from_this()); }

    // A callback that hands the step its result, unless the check is over.
    template <void (Check::*step)(GObject *, GAsyncResult *)>
    static GAsyncReadyCallback answered() {
        return [](GObject *source, GAsyncResult *result, gpointer data) {
            const std::unique_ptr<Held> check(static_cast<Held *>(data));
            ((**check).*step)(source, result);
        };
    }

    void connected(GObject * /*source*/, GAsyncResult *result) {
        bus_.reset(g_bus_get_finish(result, nullptr));
        if (!bus_ || !isUnderWay()) {
            finish();
            return;
        }
        g_dbus_connection_set_exit_on_close(bus_.get(), FALSE);
        createTransaction();
    }

    void createTransaction() {
        g_dbus_connection_call(bus_.get(), serviceName, servicePath, serviceName,
                               "CreateTransaction", nullptr, G_VARIANT_TYPE("(o)"),
                               G_DBUS_CALL_FLAGS_NONE, longestCall, cancellable_.get(),
                               answered<&Check::transactionCreated>(), hold());
    }

    void transactionCreated(GObject * /*source*/, GAsyncResult *result) {
        const GlibPointer<GVariant> reply(
            g_dbus_connection_call_finish(bus_.get(), result, nullptr));
        if (!reply || !isUnderWay()) {
            finish();
            return;
        }
        const char *path = nullptr;
        g_variant_get(reply.get(), "(&o)", &path);
        const auto heard = +[](GDBusConnection *, const char *, const char *, const char *,
                               const char *signal, GVariant *parameters, gpointer data) {
            const auto check = static_cast<Check *>(data)->shared_from_this();
            check->handleSignal(signal, parameters);
        };
        signals_ = g_dbus_connection_signal_subscribe(
            bus_.get(), serviceName, transactionInterface, nullptr, path, nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE, heard, this, nullptr);
        ask(path);
    }

    void ask(const char *path) {
        const char *method = own_ ? "GetUpdates" : "SearchFiles";
        GVariant *arguments = nullptr;
        if (own_) {
            arguments = g_variant_new("(t)", filterNone);
        } else {
            const std::array<const char *, 2> files{file_.c_str(), nullptr};
            arguments = g_variant_new("(t^as)", filterInstalled, files.data());
        }
        g_dbus_connection_call(bus_.get(), serviceName, path, transactionInterface, method,
                               arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, longestCall,
                               cancellable_.get(), answered<&Check::asked>(), hold());
    }

    void asked(GObject * /*source*/, GAsyncResult *result) {
        const GlibPointer<GVariant> reply(
            g_dbus_connection_call_finish(bus_.get(), result, nullptr));
        if (!reply) {
            finish();
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
        forgetSignals(); // what is left to say is that the transaction goes
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

    void forgetSignals() {
        if (const auto signals = std::exchange(signals_, 0); signals != 0) {
            g_dbus_connection_signal_unsubscribe(bus_.get(), signals);
        }
    }

    void finish(const UpdateResult &result = {UpdateResult::Kind::serviceUnavailable, {}}) {
        forgetSignals();
        timeout_.reset();
        if (const auto completion = std::exchange(completion_, nullptr)) {
            if (g_cancellable_is_cancelled(cancellable_.get()) == FALSE) {
                completion(result);
            }
        }
    }

    MainLoop &mainLoop_;
    std::string file_;
    GlibPointer<GCancellable> cancellable_;
    Completion completion_;
    GlibPointer<GDBusConnection> bus_;
    unsigned signals_ = 0;
    std::optional<Package> own_;
    std::optional<std::string> newer_;
    bool isListing_ = false;
    Handle timeout_;
};

PackageKitUpdates::PackageKitUpdates(MainLoop &mainLoop, std::string file)
    : mainLoop_(mainLoop)
    , file_(std::move(file))
    , cancellation_(std::make_unique<Cancellation>()) {
}

PackageKitUpdates::~PackageKitUpdates() = default;

void PackageKitUpdates::checkForUpdates(std::function<void(const UpdateResult &)> completion) {
    // Somebody who asks again while a check is under way wants one answer.
    if (check_ && check_->isUnderWay()) {
        return;
    }
    check_ = std::make_shared<Check>(mainLoop_, file_, cancellation_->get(), std::move(completion));
    check_->begin();
}

} // namespace lumo::freedesktop

#include "platform/freedesktop/PackageKitUpdates.h"

#include "bus/BusService.h"
#include "bus/RunUntil.h"
#include "desktop/MessageBus.h"
#include "desktop/Variable.h"
#include "platform/freedesktop/GlibSignal.h"

#include <gio/gio.h>
#include <gmock/gmock.h>
#include <org.freedesktop.PackageKit.Transaction.h>
#include <org.freedesktop.PackageKit.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace lumo::freedesktop {
namespace {

// The package service, which answers every method of a transaction by the signals that are scripted
// for it.
class PackageService {
  public:
    explicit PackageService(const std::string &address)
        : service_(address)
        , packages_(dbus_package_kit_skeleton_new()) {
        connect(packages_.get(), "handle-create-transaction", G_CALLBACK(&PackageService::create));
        service_.offer(packages_.get(), "/org/freedesktop/PackageKit");
        service_.takeName("org.freedesktop.PackageKit");
    }
    PackageService(const PackageService &) = delete;
    PackageService &operator=(const PackageService &) = delete;

    std::vector<std::string> owners;  // of the file
    std::vector<std::string> updates; // that there are
    bool fails = false;
    bool isSilent = false; // it never says what it found
    std::string searchedFile;

  private:
    void connect(void *object, const char *signal, GCallback function) {
        connections_.push_back(connectToSignal(object, signal, function, this));
    }

    static gboolean create(DbusPackageKit *packages, GDBusMethodInvocation *invocation,
                           gpointer self) {
        auto &service = *static_cast<PackageService *>(self);
        const auto path = "/" + std::to_string(service.transactions_.size() + 1);
        auto *transaction = dbus_package_transaction_skeleton_new();
        service.transactions_.emplace_back(transaction);
        service.connect(transaction, "handle-search-files", G_CALLBACK(&PackageService::search));
        service.connect(transaction, "handle-get-updates", G_CALLBACK(&PackageService::list));
        service.service_.offer(transaction, path.c_str());
        dbus_package_kit_complete_create_transaction(packages, invocation, path.c_str());
        return TRUE;
    }

    static gboolean search(DbusPackageTransaction *transaction, GDBusMethodInvocation *invocation,
                           guint64 /*filter*/, const char *const *files, gpointer self) {
        auto &service = *static_cast<PackageService *>(self);
        service.searchedFile = files[0];
        dbus_package_transaction_complete_search_files(transaction, invocation);
        service.finish(transaction, service.owners);
        return TRUE;
    }

    static gboolean list(DbusPackageTransaction *transaction, GDBusMethodInvocation *invocation,
                         guint64 /*filter*/, gpointer self) {
        const auto &service = *static_cast<PackageService *>(self);
        dbus_package_transaction_complete_get_updates(transaction, invocation);
        service.finish(transaction, service.updates);
        return TRUE;
    }

    void finish(DbusPackageTransaction *transaction,
                const std::vector<std::string> &packages) const {
        if (isSilent) {
            return;
        }
        for (const auto &package : packages) {
            dbus_package_transaction_emit_package(transaction, 1, package.c_str(), "A summary");
        }
        dbus_package_transaction_emit_finished(transaction, fails ? 2 : 1, 5);
        dbus_package_transaction_emit_destroy(transaction);
    }

    test::BusService service_;
    GlibPointer<DbusPackageKit> packages_;
    std::vector<GlibPointer<DbusPackageTransaction>> transactions_;
    std::vector<Handle> connections_;
};

class PackageKitUpdatesTest : public testing::Test {
  protected:
    bool eventually(const std::function<bool()> &condition) { return runUntil(loop, condition); }

    desktop::MessageBus messageBus;
    desktop::Variable systemBus{"DBUS_SYSTEM_BUS_ADDRESS", messageBus.address()};
    GlibMainLoop loop;
    std::unique_ptr<PackageKitUpdates> updates =
        std::make_unique<PackageKitUpdates>(loop, "/opt/lumo/bin/lumo");
};

TEST_F(PackageKitUpdatesTest, ResultsOfThePackageService) {
    const auto check = [&] {
        std::optional<UpdateResult> result;
        updates->checkForUpdates([&](const UpdateResult &each) { result = each; });
        EXPECT_FALSE(result) << "not before checkForUpdates() has returned";
        EXPECT_TRUE(eventually([&] { return result.has_value(); }));
        return result.value_or(UpdateResult{});
    };
    using Kind = UpdateResult::Kind;
    EXPECT_EQ(check(), (UpdateResult{Kind::serviceUnavailable, {}}));
    auto service = std::make_unique<PackageService>(messageBus.address());
    EXPECT_EQ(check(), (UpdateResult{Kind::notInstalledByPackage, {}}));
    EXPECT_EQ(service->searchedFile, "/opt/lumo/bin/lumo");
    service->owners = {"lumo;1.0.0;amd64;installed"};
    service->updates = {"lumo-extras;9.9;all;stable", "other;3;all;stable"};
    EXPECT_EQ(check(), (UpdateResult{Kind::upToDate, {}}));
    service->updates.emplace_back("lumo;1.4.2;amd64;stable");
    EXPECT_EQ(check(), (UpdateResult{Kind::newerVersion, "1.4.2"}));
    service->fails = true;
    EXPECT_EQ(check(), (UpdateResult{Kind::serviceUnavailable, {}}));
    service.reset();
    EXPECT_EQ(check(), (UpdateResult{Kind::serviceUnavailable, {}}));
}

TEST_F(PackageKitUpdatesTest, LossOfTheBusEndsTheCheck) {
    PackageService service(messageBus.address());
    service.isSilent = true;
    std::optional<UpdateResult> result;
    updates->checkForUpdates([&](const UpdateResult &each) { result = each; });
    EXPECT_TRUE(eventually([&] { return !service.searchedFile.empty(); }));
    messageBus.stop();
    EXPECT_TRUE(eventually([&] { return result.has_value(); }));
    EXPECT_EQ(result, (UpdateResult{UpdateResult::Kind::serviceUnavailable, {}}));
}

TEST_F(PackageKitUpdatesTest, OneResultForOverlappingRequests) {
    PackageService service(messageBus.address());
    int results = 0;
    for (int request = 0; request < 2; ++request) {
        updates->checkForUpdates([&](const UpdateResult &) { ++results; });
    }
    EXPECT_TRUE(eventually([&] { return results > 0; }));
    service.searchedFile.clear();
    updates->checkForUpdates([&](const UpdateResult &) { ++results; });
    EXPECT_TRUE(eventually([&] { return !service.searchedFile.empty(); }));
    updates.reset();
    const PackageService other(messageBus.address());
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
    }
    EXPECT_EQ(results, 1);
}

} // namespace
} // namespace lumo::freedesktop

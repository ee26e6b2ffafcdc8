#include "platform/freedesktop/SessionBusControl.h"

#include "bus/BusService.h"
#include "bus/RunUntil.h"
#include "desktop/MessageBus.h"
#include "desktop/TemporaryDirectory.h"
#include "desktop/Variable.h"
#include "platform/freedesktop/SessionBus.h"

#include <gio/gio.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace lumo::freedesktop {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// A running program: its requests, and what it refuses them with.
struct Program {
    Program(GlibMainLoop &loop, const char *display, StartedBy startedBy)
        : bus(loop)
        , control(bus, display, startedBy) {}

    SessionBus bus;
    SessionBusControl control;
    std::vector<RemoteRequest> requests;
    std::optional<std::string> refusal;
    Handle performing = control.onRequest([this](const RemoteRequest &request) {
        requests.push_back(request);
        return refusal;
    });
};

class SessionBusControlTest : public testing::Test {
  protected:
    std::unique_ptr<Program> start(const char *display, StartedBy startedBy = StartedBy::user) {
        return std::make_unique<Program>(loop_, display, startedBy);
    }

    // Calls a method; answer_ is the error's text then, empty without one.
    void begin(const std::string &name, const char *method, const char *arguments) {
        const auto *path = name == "app.lumo.Lumo" ? "/app/lumo/Lumo" : "/app/lumo/Lumo/X2";
        answer_.reset();
        calls_.start(
            [this](GObject *source, GAsyncResult *result) {
                GError *error = nullptr;
                const GlibPointer<GVariant> reply(
                    g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error));
                answer_ = error != nullptr ? error->message : "";
                g_clear_error(&error);
            },
            g_dbus_connection_call, client_->connection(), name.c_str(), path,
            "org.freedesktop.Application", method, g_variant_new_parsed(arguments), nullptr,
            G_DBUS_CALL_FLAGS_NONE, -1);
    }

    // The same, waiting for the answer of who has the name, which may still have to be taken.
    std::string call(const std::string &name, const char *method, const char *arguments) {
        runUntil(loop_, [&] {
            begin(name, method, arguments);
            return runUntil(loop_, [&] { return answer_.has_value(); }) &&
                   answer_->find("ServiceUnknown") == std::string::npos;
        });
        return answer_.value_or("no answer");
    }

    desktop::MessageBus messageBus_;
    desktop::Variable address_{"DBUS_SESSION_BUS_ADDRESS", messageBus_.address()};
    GlibMainLoop loop_;
    std::unique_ptr<test::BusService> client_ =
        std::make_unique<test::BusService>(messageBus_.address());
    std::optional<std::string> answer_;
    AsyncCalls calls_;
};

TEST_F(SessionBusControlTest, CallsAreRequests) {
    struct Row {
        const char *method;
        const char *arguments;
        std::optional<RemoteRequest> request; // absent: an error
    };
    using enum RemoteAction;
    const auto program = start("X1");
    for (const auto &[method, arguments, request] : std::vector<Row>{
             {"Activate", "(@a{sv} {},)", {{}}},
             {"Open", "(['file:///a'], @a{sv} {})", {{}}},
             {"ActivateAction", "('toggle', @av [], @a{sv} {})", {{toggle, {}}}},
             {"ActivateAction", "('on', @av [], {'x': <1>})", {{turnOn, {}}}},
             {"ActivateAction", "('off', @av [], @a{sv} {})", {{turnOff, {}}}},
             {"ActivateAction", "('peek', @av [], @a{sv} {})", {{peek, {}}}},
             {"ActivateAction", "('set-cover', @av [], @a{sv} {})", {{setCover, {}}}},
             {"ActivateAction", "('set-cover', [<'a.B'>], @a{sv} {})", {{setCover, "a.B"}}},
             {"ActivateAction", "('emergency-stop', @av [], @a{sv} {})", {{emergencyStop, {}}}},
             {"ActivateAction", "('settings', @av [], @a{sv} {})", {{openSettings, {}}}},
             {"ActivateAction", "('quit', @av [], @a{sv} {})", {{quit, {}}}},
             {"ActivateAction", "('set-cover', [<5>], @a{sv} {})", {}},
             {"ActivateAction", "('set-cover', [<'a'>, <'b'>], @a{sv} {})", {}},
             {"ActivateAction", "('toggle', [<true>], @a{sv} {})", {}},
             {"ActivateAction", "('Toggle', @av [], @a{sv} {})", {}},
         }) {
        EXPECT_EQ(call("app.lumo.Lumo", method, arguments).empty(), request.has_value())
            << arguments;
        runUntil(loop_, [&] { return !program->requests.empty() || !request; });
        EXPECT_EQ(std::exchange(program->requests, {}),
                  request ? std::vector{*request} : std::vector<RemoteRequest>())
            << arguments;
    }
    program->refusal = "not now";
    EXPECT_THAT(call("app.lumo.Lumo", "Activate", "(@a{sv} {},)"), HasSubstr("not now"));
}

TEST_F(SessionBusControlTest, EachDisplayHasItsNameAndTheFirstTheCommonOne) {
    const auto *peek = "('peek', @av [], @a{sv} {})";
    auto first = start("X1");
    EXPECT_EQ(call("app.lumo.Lumo", "ActivateAction", peek), "");
    const auto second = start("X2");
    EXPECT_EQ(call("app.lumo.Lumo.X2", "ActivateAction", peek), "");
    EXPECT_EQ(call("app.lumo.Lumo", "ActivateAction", peek), "");
    EXPECT_EQ(first->requests.size(), 2U);
    EXPECT_EQ(second->requests.size(), 1U);
    first.reset();
    EXPECT_EQ(call("app.lumo.Lumo", "ActivateAction", peek), "");

    client_.reset();
    messageBus_.stop();
    ASSERT_TRUE(runUntil(loop_, [&] { return second->bus.connection() == nullptr; }));
    messageBus_.start();
    client_ = std::make_unique<test::BusService>(messageBus_.address());
    EXPECT_EQ(call("app.lumo.Lumo.X2", "ActivateAction", peek), "");
    EXPECT_EQ(second->requests.size(), 3U);
}

// The bus starts a program that never takes the name, in whose place this one does.
TEST_F(SessionBusControlTest, FirstRequestIsWhatTheBusStartedTheProgramFor) {
    const desktop::TemporaryDirectory folder;
    const auto services = folder.path() / "dbus-1" / "services";
    std::filesystem::create_directories(services);
    std::ofstream(services / "app.lumo.Lumo.service")
        << "[D-BUS Service]\nName=app.lumo.Lumo\nExec=/bin/sleep 10\n";
    const desktop::MessageBus bus({{"XDG_DATA_HOME", folder.path()}},
                                  desktop::MessageBus::Services::ofTheSystem);
    const desktop::Variable address("DBUS_SESSION_BUS_ADDRESS", bus.address());
    client_ = std::make_unique<test::BusService>(bus.address());
    for (const auto startedBy : {StartedBy::request, StartedBy::user}) {
        begin("app.lumo.Lumo", "Activate", "(@a{sv} {},)");
        const auto program = start("X1", startedBy);
        ASSERT_TRUE(runUntil(loop_, [&] { return answer_.has_value(); }));
        EXPECT_EQ(call("app.lumo.Lumo", "Activate", "(@a{sv} {},)"), "");
        const RemoteRequest later;
        RemoteRequest first;
        first.hasStartedProgram = startedBy == StartedBy::request;
        EXPECT_THAT(program->requests, ElementsAre(first, later));
    }
}

} // namespace
} // namespace lumo::freedesktop

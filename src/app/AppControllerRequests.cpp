#include "app/AppController.h"
#include "platform/Application.h"
#include "platform/RemoteControl.h"
#include "presentation/CoverAppChoice.h"

namespace lumo {

std::optional<std::string> AppController::perform(const RemoteRequest &request) {
    switch (request.action) {
    case RemoteAction::activate:
        break;
    case RemoteAction::toggle:
        // Who starts the program by that has not seen the effect, whatever the settings say.
        setLumoEnabled(request.hasStartedProgram || !settingsStore_.isEnabled.value());
        break;
    case RemoteAction::turnOn:
    case RemoteAction::turnOff:
        setLumoEnabled(request.action == RemoteAction::turnOn);
        break;
    case RemoteAction::peek:
        if (!settingsStore_.isEnabled.value()) {
            return "Lumo is off";
        }
        enterPeekMode();
        break;
    case RemoteAction::setCover:
        return request.application ? cover(*request.application) : coverFrontmost();
    case RemoteAction::emergencyStop:
        emergencyStop();
        break;
    case RemoteAction::openSettings:
        openSettings(SettingsTab::general);
        break;
    case RemoteAction::quit:
        platform_.application.terminate();
        break;
    }
    return std::nullopt;
}

std::optional<std::string> AppController::coverFrontmost() {
    const bool isSet = setPrivacyCoverAppFromFrontmost(true).has_value();
    settingsStore_.privacyCoverEnabled.set(true);
    return isSet ? std::nullopt : std::optional<std::string>("No application is in front");
}

std::optional<std::string> AppController::cover(const std::string &bundleID) {
    if (bundleID.empty()) {
        selectCoverApp(std::nullopt);
        return std::nullopt;
    }
    const auto name = applicationName(platform_.workspace, bundleID);
    if (!name) {
        return "There is no application " + bundleID;
    }
    selectCoverApp(CoverAppChoice{bundleID, bundleID, *name});
    settingsStore_.privacyCoverEnabled.set(true);
    return std::nullopt;
}

} // namespace lumo

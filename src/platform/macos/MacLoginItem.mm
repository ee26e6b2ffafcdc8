#import "platform/macos/MacLoginItem.h"

#import "platform/macos/NativeValues.h"

#import <ServiceManagement/ServiceManagement.h>

namespace lumo::macos {

namespace {

std::optional<std::string> outcome(BOOL succeeded, NSError *error) {
    if (succeeded) {
        return std::nullopt;
    }
    return optionalText(error.localizedDescription).value_or("unknown error");
}

} // namespace

// The service takes a request for what is so already for an error.
std::optional<std::string> MacLoginItem::registerMainApplication() {
    SMAppService *service = [SMAppService mainAppService];
    if (service.status == SMAppServiceStatusEnabled) {
        return std::nullopt;
    }
    NSError *error = nil;
    const BOOL succeeded = [service registerAndReturnError:&error];
    return outcome(succeeded, error);
}

std::optional<std::string> MacLoginItem::unregisterMainApplication() {
    SMAppService *service = [SMAppService mainAppService];
    if (service.status == SMAppServiceStatusNotRegistered ||
        service.status == SMAppServiceStatusNotFound) {
        return std::nullopt;
    }
    NSError *error = nil;
    const BOOL succeeded = [service unregisterAndReturnError:&error];
    return outcome(succeeded, error);
}

} // namespace lumo::macos

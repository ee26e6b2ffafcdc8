#import "platform/macos/UnifiedLog.h"

#import "platform/macos/NativeValues.h"

#import <os/log.h>

#include <string>

namespace lumo::macos {

Log unifiedLog(const char *category) {
    const auto subsystem = optionalText([[NSBundle mainBundle] bundleIdentifier]).value_or("Lumo");
    os_log_t log = os_log_create(subsystem.c_str(), category);
    return Log([log](std::string_view line) {
        const std::string text(line);
        os_log_error(log, "%{public}s", text.c_str());
    });
}

} // namespace lumo::macos

#import "platform/macos/MacAppearance.h"

#import "platform/macos/LumoAppearanceObserver.h"

#include <utility>

@implementation LumoAppearanceObserver

- (void)observeValueForKeyPath:(NSString *)keyPath
                      ofObject:(id)object
                        change:(NSDictionary<NSString *, id> *)change
                       context:(void *)context {
    onChange();
}

@end

namespace lumo::macos {

static NSString *const appearanceKey = @"effectiveAppearance";

MacAppearance::MacAppearance()
    : observer_([[LumoAppearanceObserver alloc] init]) {
    observer_->onChange = [this] { changed_.emit(); };
    [[NSApplication sharedApplication] addObserver:observer_
                                        forKeyPath:appearanceKey
                                           options:0
                                           context:nullptr];
}

MacAppearance::~MacAppearance() {
    [[NSApplication sharedApplication] removeObserver:observer_ forKeyPath:appearanceKey];
}

std::optional<bool> MacAppearance::prefersDark() const {
    NSAppearance *appearance = [[NSApplication sharedApplication] effectiveAppearance];
    NSAppearanceName best = [appearance
        bestMatchFromAppearancesWithNames:@[ NSAppearanceNameAqua, NSAppearanceNameDarkAqua ]];
    return [best isEqualToString:NSAppearanceNameDarkAqua];
}

Handle MacAppearance::onChange(std::function<void()> observer) {
    return changed_.subscribe(std::move(observer));
}

} // namespace lumo::macos

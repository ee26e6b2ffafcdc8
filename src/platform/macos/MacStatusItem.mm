#import "platform/macos/MacStatusItem.h"

#import "platform/macos/NativeValues.h"

#include <functional>
#include <utility>

// What the button sends its action to.
@interface LumoStatusItemTarget : NSObject {
  @public
    std::function<void()> onClick;
}
- (void)handleStatusItemClick;
@end

@implementation LumoStatusItemTarget
- (void)handleStatusItemClick {
    onClick();
}
@end

namespace lumo::macos {

static_assert(NSEventMaskRightMouseUp == 0x10);

MacStatusItem::MacStatusItem()
    : item_([[NSStatusBar systemStatusBar] statusItemWithLength:NSVariableStatusItemLength])
    , target_([[LumoStatusItemTarget alloc] init]) {
    target_->onClick = [this] { clicked_.emit(place()); };
    NSStatusBarButton *button = item_.button;
    button.target = target_;
    button.action = @selector(handleStatusItemClick);
    [button sendActionOn:NSEventMaskRightMouseUp];
}

MacStatusItem::~MacStatusItem() {
    item_.button.target = nil;
    [[NSStatusBar systemStatusBar] removeStatusItem:item_];
}

void MacStatusItem::setToolTip(const std::string &text) {
    item_.button.toolTip = nativeString(text);
}

void MacStatusItem::setTitle(const StatusTitle &title) {
    NSStatusBarButton *button = item_.button;
    button.image = nil;
    button.contentTintColor = nil;
    const NSFontWeight weight = title.isSemibold ? NSFontWeightSemibold : NSFontWeightRegular;
    const Color &color = title.color;
    NSDictionary<NSAttributedStringKey, id> *attributes = @{
        NSForegroundColorAttributeName : color == Color::white() ? [NSColor whiteColor]
        : color.red == color.green && color.green == color.blue
            ? [NSColor colorWithCalibratedWhite:color.red alpha:color.alpha]
            : nativeColor(color),
        NSFontAttributeName : [NSFont systemFontOfSize:title.pointSize weight:weight],
        NSBaselineOffsetAttributeName : @(title.baselineOffset),
    };
    button.attributedTitle = [[NSAttributedString alloc] initWithString:nativeString(title.text)
                                                             attributes:attributes];
    button.needsDisplay = YES;
}

Handle MacStatusItem::onRightMouseUp(std::function<void(const StatusItemPlace &)> observer) {
    return clicked_.subscribe(std::move(observer));
}

NSView *MacStatusItem::button() const {
    return item_.button;
}

StatusItemPlace MacStatusItem::place() const {
    const NSPoint pointer = [NSEvent mouseLocation];
    StatusItemPlace place{.item = {}, .pointer = {pointer.x, pointer.y}};
    NSView *view = button();
    if (NSWindow *window = view.window) {
        place.item = rectOf([window convertRectToScreen:[view convertRect:view.bounds toView:nil]]);
    }
    return place;
}

} // namespace lumo::macos

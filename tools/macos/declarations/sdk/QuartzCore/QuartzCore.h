// What Lumo uses of Core Animation.
#pragma once

#import <CoreGraphics/CoreGraphics.h>

NS_ASSUME_NONNULL_BEGIN

typedef double CFTimeInterval;
typedef NSString *CALayerContentsFilter;
typedef NSString *CAShapeLayerFillRule;

extern "C" {
CFTimeInterval CACurrentMediaTime(void) LUMO_SINCE(10.5);
extern CALayerContentsFilter const kCAFilterNearest LUMO_SINCE(10.5);
extern CALayerContentsFilter const kCAFilterLinear LUMO_SINCE(10.5);
extern CAShapeLayerFillRule const kCAFillRuleEvenOdd LUMO_SINCE(10.6);
}

LUMO_SINCE(10.5)
@interface CALayer : NSObject
@property CGRect frame;
@property float opacity;
@property BOOL masksToBounds;
@property(nullable) CGColorRef backgroundColor;
@property(nullable, strong) id contents;
@property CGFloat contentsScale LUMO_SINCE(10.7);
@property(copy) CALayerContentsFilter minificationFilter;
@property(copy) CALayerContentsFilter magnificationFilter;
@property(nullable, strong) id compositingFilter;
@property(nullable, copy) NSArray *filters;
@property(nullable, strong) __kindof CALayer *mask;
- (instancetype)init;
- (void)addSublayer:(CALayer *)layer;
- (void)removeFromSuperlayer;
@end

LUMO_SINCE(10.6)
@interface CAShapeLayer : CALayer
@property(nullable) CGPathRef path;
@property(copy) CAShapeLayerFillRule fillRule;
@property(nullable) CGColorRef fillColor;
@end

LUMO_SINCE(10.5)
@interface CATransaction : NSObject
+ (void)begin;
+ (void)commit;
+ (void)setDisableActions:(BOOL)flag LUMO_SINCE(10.6);
@end

NS_ASSUME_NONNULL_END

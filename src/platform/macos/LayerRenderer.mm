#import "platform/macos/LayerRenderer.h"

#import "platform/macos/CFReference.h"
#import "platform/macos/NativeValues.h"
#include "platform/macos/logic/FilterTable.h"
#include "platform/macos/logic/WindowFlags.h"

#import <CoreGraphics/CoreGraphics.h>
#import <objc/runtime.h>

#include <algorithm>
#include <memory>

namespace lumo::macos {

static_assert(premultipliedLast == kCGImageAlphaPremultipliedLast);
static_assert(noAlpha == kCGImageAlphaNone);

namespace {

Class backdropClass() {
    Class found = NSClassFromString(nativeString(backdropLayerClass));
    return [found isSubclassOfClass:[CALayer class]] ? found : Nil;
}

// Nil when the class is missing.
CALayer *makeLayer(Layer::Kind kind) {
    return kind == Layer::Kind::plain ? [[CALayer alloc] init] : [[backdropClass() alloc] init];
}

// Nil when the class, its factory or the filter is missing.
id makeFilter(const Filter &filter, LenientCoding &coding) {
    Class found = NSClassFromString(nativeString(filterClass));
    SEL factory = NSSelectorFromString(nativeString(filterFactory));
    Method method = found != Nil ? class_getClassMethod(found, factory) : nullptr;
    if (method == nullptr) {
        return nil;
    }
    using Factory = id (*)(Class, SEL, NSString *);
    const auto make = reinterpret_cast<Factory>(method_getImplementation(method));
    const auto [type, parameters] = nativeFilter(filter);
    id made = make(found, factory, nativeString(type));
    for (const auto &[key, value] : parameters) {
        coding.set(made, key, nativeObject(value));
    }
    return made;
}

// Filters that can't be made are left out; when none can, the layer keeps those that it has.
void applyFilters(CALayer *layer, const std::vector<Filter> &filters, LenientCoding &coding) {
    NSMutableArray *made = [NSMutableArray arrayWithCapacity:filters.size()];
    for (const auto &filter : filters) {
        if (id one = makeFilter(filter, coding)) {
            [made addObject:one];
        }
    }
    if (made.count > 0) {
        coding.set(layer, "filters", made);
    }
}

// The image shares its pixels with the value, which lives as long as it is drawn.
id nativeImage(const std::shared_ptr<const Image> &image) {
    if (!image) {
        return nil;
    }
    const auto width = static_cast<std::size_t>(image->width);
    const auto height = static_cast<std::size_t>(image->height);
    // A copy, since a block takes a reference for what it is.
    const auto held = image;
    NSData *pixels =
        [[NSData alloc] initWithBytesNoCopy:const_cast<std::uint8_t *>(held->pixels.data())
                                     length:held->pixels.size()
                                deallocator:^(void *, NSUInteger) {
                                    // Keeps the value alive until here.
                                    (void)held;
                                }];
    const CFReference<CGDataProviderRef> provider(
        CGDataProviderCreateWithCFData((__bridge CFDataRef)pixels));
    if (!provider) {
        return nil;
    }
    const bool isGrey = image->format == Image::Format::grey;
    const CFReference<CGColorSpaceRef> colors(isGrey ? CGColorSpaceCreateDeviceGray()
                                                     : CGColorSpaceCreateDeviceRGB());
    const auto pixelBytes = image->bytesPerPixel();
    return CFBridgingRelease(CGImageCreate(width, height, 8, 8 * pixelBytes, pixelBytes * width,
                                           colors.get(), isGrey ? noAlpha : premultipliedLast,
                                           provider.get(), nullptr, false,
                                           kCGRenderingIntentDefault));
}

CALayerContentsFilter nativeSampling(Sampling sampling) {
    return sampling == Sampling::nearest ? kCAFilterNearest : kCAFilterLinear;
}

void apply(CALayer *target, const Layer &layer, const LayerChange &change, LenientCoding &coding) {
    if (change.masksToBounds) {
        target.masksToBounds = layer.masksToBounds;
    }
    if (change.backgroundColor) {
        target.backgroundColor = nativeColor(layer.backgroundColor).CGColor;
    }
    if (change.backdropScale) {
        const auto settings = change.isNew ? backdropSettings(layer.backdropScale)
                                           : std::vector{backdropScaleSetting(layer.backdropScale)};
        for (const auto &[key, value] : settings) {
            coding.set(target, key, nativeObject(value));
        }
    }
    if (change.opacity) {
        target.opacity = layer.opacity;
    }
    if (change.blendMode) {
        const char *name = compositingFilterName(layer.blendMode);
        target.compositingFilter = name != nullptr ? nativeString(name) : nil;
    }
    if (change.samplingFilters) {
        target.minificationFilter = nativeSampling(layer.minificationFilter);
        target.magnificationFilter = nativeSampling(layer.magnificationFilter);
    }
    if (change.filters) {
        applyFilters(target, layer.filters, coding);
    }
    if (change.frame) {
        target.frame = nativeRect(layer.frame);
    }
    if (change.contentsScale) {
        target.contentsScale = layer.contentsScale;
    }
    if (change.contents) {
        target.contents = nativeImage(layer.contents);
    }
}

void setMask(CAShapeLayer *shape, const EvenOddMask &mask) {
    const CFReference<CGMutablePathRef> path(CGPathCreateMutable());
    for (const auto &rectangle : mask.rectangles) {
        CGPathAddRect(path.get(), nullptr, nativeRect(rectangle));
    }
    shape.frame = nativeRect(mask.frame);
    shape.path = path.get();
    shape.fillRule = kCAFillRuleEvenOdd;
    shape.fillColor = [NSColor whiteColor].CGColor;
}

} // namespace

bool hasBackdropLayers() {
    return backdropClass() != Nil;
}

LayerRenderer::LayerRenderer(NSView *view, const Log &log)
    : coding_(log)
    , view_(view)
    , exclusionMaskLayer_([[CAShapeLayer alloc] init]) {
    view_.wantsLayer = YES;
    view_.layer.masksToBounds = YES;
    view_.layer.backgroundColor = [NSColor clearColor].CGColor;
}

void LayerRenderer::makeLayers(const LayerTree &tree, const LayerTreeChange &change) {
    for (std::size_t index = tree.layers.size(); index < layers_.size(); ++index) {
        [layers_[index] removeFromSuperlayer];
    }
    layers_.resize(tree.layers.size());
    for (std::size_t index = 0; index < tree.layers.size(); ++index) {
        if (change.layers[index].isNew) {
            [layers_[index] removeFromSuperlayer];
            layers_[index] = makeLayer(tree.layers[index].kind);
        }
    }
    if (!std::ranges::any_of(change.layers, &LayerChange::isNew)) {
        return;
    }
    // All of them, from the bottom: what is added comes on top, wherever it was before.
    for (CALayer *layer : layers_) {
        if (layer != nil) {
            [view_.layer addSublayer:layer];
        }
    }
}

void LayerRenderer::show(const LayerTree &tree) {
    const auto change = difference(shown_ ? &*shown_ : nullptr, tree);
    if (!change.any()) {
        return;
    }
    [CATransaction begin];
    [CATransaction setDisableActions:YES];
    CALayer *root = view_.layer;
    if (change.bounds) {
        view_.frame = nativeRect(tree.bounds);
    }
    if (change.viewAlpha) {
        view_.alphaValue = tree.viewAlpha;
    }
    makeLayers(tree, change);
    for (std::size_t index = 0; index < tree.layers.size(); ++index) {
        apply(layers_[index], tree.layers[index], change.layers[index], coding_);
    }
    if (change.mask == MaskChange::set) {
        setMask(exclusionMaskLayer_, *tree.mask);
        root.mask = exclusionMaskLayer_;
    } else if (change.mask == MaskChange::remove) {
        root.mask = nil;
    }
    [CATransaction commit];
    shown_ = tree;
}

} // namespace lumo::macos

#pragma once

#import <CoreFoundation/CoreFoundation.h>

#include <memory>
#include <type_traits>

namespace lumo::macos {

struct ReleaseCF {
    void operator()(CFTypeRef object) const { CFRelease(object); }
};

// Owns one reference to a Core Foundation object; empty where there is none.
template <class Reference>
using CFReference = std::unique_ptr<std::remove_pointer_t<Reference>, ReleaseCF>;

// For an object that was not created or copied by the caller.
template <class Reference>
CFReference<Reference> retained(Reference object) {
    if (object != nullptr) {
        CFRetain(object);
    }
    return CFReference<Reference>(object);
}

} // namespace lumo::macos

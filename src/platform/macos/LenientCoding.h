#pragma once

#include "support/Log.h"

#import <Foundation/Foundation.h>

#include <functional>
#include <set>
#include <string>
#include <string_view>

namespace lumo::macos {

// Key-value coding of objects that the platform does not document. A key that such an object lacks
// raises an exception, which would end the program.
class LenientCoding {
  public:
    // The log outlives the object.
    explicit LenientCoding(const Log &log);

    // Sets the value, or leaves the object as it is; says so the first time that a key is refused.
    void set(id object, std::string_view key, id value);

  private:
    const Log &log_;
    std::set<std::string, std::less<>> refused_;
};

} // namespace lumo::macos

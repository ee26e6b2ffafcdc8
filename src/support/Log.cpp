#include "support/Log.h"

#include <iostream>
#include <utility>

namespace lumo {

Log::Log(Sink sink)
    : sink_(std::move(sink)) {
}

Log Log::standardOutput() {
    return Log([](std::string_view line) { std::cout << line << std::endl; });
}

} // namespace lumo

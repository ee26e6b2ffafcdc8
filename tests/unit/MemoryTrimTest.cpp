#include "platform/freedesktop/MemoryTrim.h"

#include <gtest/gtest.h>

#include <fstream>

namespace lumo::freedesktop {
namespace {

long residentPages() {
    std::ifstream file("/proc/self/statm");
    long all = 0;
    long resident = 0;
    file >> all >> resident;
    return resident;
}

TEST(MemoryTrim, LessIsResidentAndCodeComesBack) {
    const long before = residentPages();
    trimMemory();
    const long after = residentPages();
    EXPECT_LT(after, before);
    EXPECT_GT(after, 0);
}

} // namespace
} // namespace lumo::freedesktop

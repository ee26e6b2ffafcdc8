#include "RunningInterface.h"

#include <gmock/gmock.h>

#include <cstdlib>

int main(int argc, char **argv) {
    testing::InitGoogleMock(&argc, argv);
    // A locale that the toolkit would put in force, with nothing in it that differs.
    setenv("LC_ALL", "C.UTF-8", 1); // NOLINT(concurrency-mt-unsafe): no thread runs yet
    const lumo::test::RunningInterface running;
    return RUN_ALL_TESTS();
}

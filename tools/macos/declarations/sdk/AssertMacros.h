// The short names that the system's headers take as macros unless they are told not to; any of them
// includes this.
#pragma once

#ifndef __ASSERT_MACROS_DEFINE_VERSIONS_WITHOUT_UNDERSCORES
#define __ASSERT_MACROS_DEFINE_VERSIONS_WITHOUT_UNDERSCORES 1
#endif

#if __ASSERT_MACROS_DEFINE_VERSIONS_WITHOUT_UNDERSCORES
#define check(assertion)
#define verify(assertion)
#define require(assertion, label)                                                                  \
    do {                                                                                           \
        if (!(assertion))                                                                          \
            goto label;                                                                            \
    } while (0)
#endif

// The versions of the system by name, and the one that is built for.
#pragma once

#define __MAC_10_14 101400
#define __MAC_10_15 101500
#define __MAC_11_0 110000
#define __MAC_12_0 120000
#define __MAC_13_0 130000

#define __MAC_OS_X_VERSION_MIN_REQUIRED __MAC_13_0
#define __MAC_OS_X_VERSION_MAX_ALLOWED __MAC_13_0

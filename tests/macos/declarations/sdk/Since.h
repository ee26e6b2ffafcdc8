// The version of macOS in which a declaration appeared, so that a call newer than the oldest system
// that Lumo runs on is an error.
#pragma once

#define LUMO_SINCE(version) __attribute__((availability(macos, introduced = version)))

// The version of macOS in which a declaration appeared, so that a call newer than the oldest system
// that Lumo runs on is an error. Members of a class appeared with it unless they say otherwise.
#pragma once

#define LUMO_SINCE(version) __attribute__((availability(macos, introduced = version)))

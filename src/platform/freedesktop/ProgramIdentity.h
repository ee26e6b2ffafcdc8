#pragma once

// What this program is called wherever the desktop tells applications apart: the name of its
// desktop entry, of its settings file and of its service, and what users read.
namespace lumo::freedesktop::program {

inline constexpr const char *identifier = "app.lumo.Lumo";
inline constexpr const char *name = "Lumo";

} // namespace lumo::freedesktop::program

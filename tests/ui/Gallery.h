#pragma once

#include <filesystem>

namespace lumo::test {

// Draws every page of the interface into the directory, as <page>-<light|dark>@<scale>x.png. False,
// with the reason on standard error, when a picture can't be written.
bool drawGallery(const std::filesystem::path &directory);

} // namespace lumo::test

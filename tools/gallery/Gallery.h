#pragma once

#include <filesystem>
#include <vector>

namespace lumo::test {

// Draws pages of the interface, in light and dark, into the directory: those for the documentation
// at one and two device pixels a point, or every page there is at the scales given; and those for
// the documentation once more in the Mac's words, into a folder of its own. False when a file can't
// be written. Once per process.
bool drawGallery(const std::filesystem::path &directory, const std::vector<double> &scales);

} // namespace lumo::test

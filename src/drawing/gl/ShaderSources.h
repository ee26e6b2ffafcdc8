#pragma once

// The files in shaders/, which the build puts into the program.
namespace lumo::drawing::shaders {

extern const char *const rectangles;
extern const char *const downsample;
extern const char *const blur;
extern const char *const compose;

} // namespace lumo::drawing::shaders

#pragma once

#include <epoxy/gl.h>

#include <string>
#include <unordered_map>

namespace lumo::drawing {

// A vertex and a fragment shader, linked. Made and used with a context current on the thread.
class GlProgram {
  public:
    // A shader that does not compile is a fault of the driver's or ours: the program is then not
    // usable.
    GlProgram(const char *vertexSource, const char *fragmentSource);
    ~GlProgram() { glDeleteProgram(program_); }
    GlProgram(const GlProgram &) = delete;
    GlProgram &operator=(const GlProgram &) = delete;

    bool isUsable() const { return isUsable_; }
    void use() const { glUseProgram(program_); }

    // Where a uniform of that name is; OpenGL ignores what is set where there is none.
    GLint operator[](const std::string &uniform);

  private:
    GLuint program_;
    bool isUsable_ = false;
    std::unordered_map<std::string, GLint> locations_;
};

} // namespace lumo::drawing

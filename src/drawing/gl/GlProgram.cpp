#include "drawing/gl/GlProgram.h"

namespace lumo::drawing {

GlProgram::GlProgram(const char *vertexSource, const char *fragmentSource)
    : program_(glCreateProgram()) {
    const auto attach = [this](GLenum kind, const char *source) {
        const GLuint shader = glCreateShader(kind);
        glShaderSource(shader, 1, &source, nullptr);
        glCompileShader(shader);
        glAttachShader(program_, shader);
        // It goes with the program.
        glDeleteShader(shader);
    };
    attach(GL_VERTEX_SHADER, vertexSource);
    attach(GL_FRAGMENT_SHADER, fragmentSource);
    glLinkProgram(program_);
    GLint isLinked = GL_FALSE;
    glGetProgramiv(program_, GL_LINK_STATUS, &isLinked);
    isUsable_ = isLinked == GL_TRUE;
}

GLint GlProgram::operator[](const std::string &uniform) {
    const auto [entry, isNew] = locations_.try_emplace(uniform, -1);
    if (isNew) {
        entry->second = glGetUniformLocation(program_, uniform.c_str());
    }
    return entry->second;
}

} // namespace lumo::drawing

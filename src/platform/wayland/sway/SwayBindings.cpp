#include "platform/wayland/sway/SwayBindings.h"

#include <glob.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <sstream>

namespace lumo::wayland::sway {

namespace {

std::vector<std::string> wordsOf(const std::string &line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

// Without comments; what a backslash continues is one line.
std::vector<std::string> linesOf(std::string_view configuration) {
    std::istringstream stream{std::string(configuration)};
    std::vector<std::string> lines;
    bool isContinued = false;
    for (std::string line; std::getline(stream, line);) {
        const bool continues = line.ends_with('\\');
        if (continues) {
            line.pop_back();
        }
        if (isContinued) {
            lines.back() += line;
        } else {
            lines.push_back(line);
        }
        isContinued = continues;
    }
    std::erase_if(lines, [](const std::string &line) {
        const auto first = line.find_first_not_of(" \t");
        return first == std::string::npos || line[first] == '#';
    });
    return lines;
}

std::string canonicalModifier(const std::string &name) {
    static const std::map<std::string, std::string> names = {
        {"Ctrl", "Control"}, {"Alt", "Mod1"}, {"Super", "Mod4"}, {"Logo", "Mod4"}};
    const auto found = names.find(name);
    return found != names.end() ? found->second : name;
}

class ConfigurationReading {
  public:
    std::vector<Binding> read(std::string_view configuration) {
        for (const auto &line : linesOf(configuration)) {
            readLine(wordsOf(withVariables(line)));
        }
        return std::move(bindings_);
    }

  private:
    // The longest name counts where several fit, as in sway.
    std::string withVariables(std::string line) const {
        // NOLINTNEXTLINE(modernize-loop-convert): views are beyond clang-tidy's compiler
        for (auto variable = variables_.rbegin(); variable != variables_.rend(); ++variable) {
            const auto &[name, value] = *variable;
            for (auto at = line.find(name); at != std::string::npos;
                 at = line.find(name, at + value.size())) {
                line.replace(at, name.size(), value);
            }
        }
        return line;
    }

    void readLine(std::vector<std::string> words) {
        const bool opens = words.back() == "{";
        if (words.front() == "}") {
            if (!blocks_.empty()) {
                blocks_.pop_back();
            }
            return;
        }
        const auto verb = words.front();
        if (verb == "set" && words.size() > 2) {
            variables_[words[1]] = words[2];
        } else if (verb == "bindsym" || verb == "bindcode") {
            words.erase(words.begin());
            if (opens) {
                blocks_.push_back(verb);
            } else {
                add(words, verb == "bindcode");
            }
            return;
        } else if (!blocks_.empty() && blocks_.back().starts_with("bind")) {
            add(words, blocks_.back() == "bindcode");
        }
        if (opens) {
            blocks_.push_back(verb == "mode" ? "mode " + modeOf(words) : verb);
        }
    }

    static std::string modeOf(const std::vector<std::string> &words) {
        const auto name = std::find_if(words.begin() + 1, words.end(), [](const std::string &word) {
            return !word.starts_with("--");
        });
        std::string mode = name != words.end() ? *name : std::string();
        std::erase(mode, '"');
        return mode;
    }

    void add(const std::vector<std::string> &words, bool isKeycode) {
        const auto combination = std::ranges::find_if(
            words, [](const std::string &word) { return !word.starts_with("--"); });
        if (combination == words.end()) {
            return;
        }
        Binding binding{currentMode(), {}, {}, isKeycode};
        std::istringstream parts(*combination);
        for (std::string part; std::getline(parts, part, '+');) {
            if (!binding.key.empty()) {
                binding.modifiers.insert(canonicalModifier(binding.key));
            }
            binding.key = part;
        }
        bindings_.push_back(std::move(binding));
    }

    std::string currentMode() const {
        constexpr std::string_view prefix = "mode ";
        for (const auto &block : blocks_) {
            if (block.starts_with(prefix)) {
                return block.substr(prefix.size());
            }
        }
        return "default";
    }

    std::map<std::string, std::string> variables_;
    std::vector<std::string> blocks_; // what the braces that are open belong to
    std::vector<Binding> bindings_;
};

std::vector<std::string> filesOf(const std::string &pattern, const std::filesystem::path &folder) {
    const bool isPlaced = pattern.starts_with('/') || pattern.starts_with('~');
    glob_t found{};
    std::vector<std::string> files;
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing changes the environment while threads run
    if (glob((isPlaced ? pattern : (folder / pattern).string()).c_str(), GLOB_TILDE, nullptr,
             &found) == 0) {
        files.assign(found.gl_pathv, found.gl_pathv + found.gl_pathc);
    }
    globfree(&found);
    return files;
}

std::string withIncludes(std::string_view configuration, const std::filesystem::path &folder,
                         int depth) {
    constexpr int deepest = 8; // files may include each other in a circle
    std::string text;
    for (const auto &line : linesOf(configuration)) {
        const auto words = wordsOf(line);
        if (words.front() != "include" || words.size() < 2 || depth == deepest) {
            text += line + '\n';
            continue;
        }
        for (const auto &file : filesOf(words[1], folder)) {
            std::ostringstream content;
            content << std::ifstream(file).rdbuf();
            text += withIncludes(content.str(), folder, depth + 1) + '\n';
        }
    }
    return text;
}

} // namespace

std::vector<Binding> bindingsOf(std::string_view configuration) {
    return ConfigurationReading().read(configuration);
}

std::string withIncludes(std::string_view configuration, const std::filesystem::path &folder) {
    return withIncludes(configuration, folder, 0);
}

} // namespace lumo::wayland::sway

#include "platform/posix/LineOutput.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <memory>

namespace lumo::posix {

void LineOutput::print(std::string_view line) {
    write();
    if (!unwritten_.empty()) {
        ++dropped_;
        return;
    }
    std::string text;
    if (dropped_ > 0) {
        text = "[Lumo] " + std::to_string(dropped_) + " lines could not be written here\n";
    }
    text.append(line).push_back('\n');
    const auto size = text.size();
    unwritten_ = std::move(text);
    write();
    if (unwritten_.size() == size) {
        unwritten_.clear();
        ++dropped_;
    } else {
        dropped_ = 0;
    }
}

// As much as there is room for now. A descriptor that is ready takes PIPE_BUF bytes without
// waiting, whatever it is.
void LineOutput::write() {
    while (!unwritten_.empty()) {
        pollfd readiness{fileDescriptor_, POLLOUT, 0};
        if (poll(&readiness, 1, 0) != 1 || (readiness.revents & POLLOUT) == 0) {
            return;
        }
        const auto count = ::write(fileDescriptor_, unwritten_.data(),
                                   std::min<std::size_t>(unwritten_.size(), PIPE_BUF));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return;
        }
        unwritten_.erase(0, static_cast<std::size_t>(count));
    }
}

Log standardOutputLog(Log::Detail detail) {
    return Log([output = std::make_shared<LineOutput>(STDOUT_FILENO)](
                   std::string_view line) { output->print(line); },
               detail);
}

} // namespace lumo::posix

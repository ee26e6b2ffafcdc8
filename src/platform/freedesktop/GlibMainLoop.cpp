#include "platform/freedesktop/GlibMainLoop.h"

#include "platform/freedesktop/FileDescriptor.h"
#include "platform/freedesktop/GlibPointers.h"
#include "support/Invariant.h"
#include "support/WorkerThreads.h"

#include <glib-unix.h>
#include <glib.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <utility>

namespace lumo::freedesktop {

namespace {

constexpr std::size_t backgroundThreadLimit = 2;

// Attaches the source to the default context; the handle takes it away again. The source must bear
// a dispatch within its own dispatch, in a loop that its task turns: keeping it out of such a loop
// would cost four system calls per dispatch.
Handle attach(GSource *source) {
    g_source_set_can_recurse(source, TRUE);
    g_source_attach(source, nullptr);
    return Handle([source] {
        g_source_destroy(source);
        g_source_unref(source);
    });
}

// A source that calls a function of ours. Lives in memory that GLib manages, hence the pointer.
template <class State>
struct SourceOf {
    GSource base;
    State *state;

    static State &stateOf(GSource *source) { return *reinterpret_cast<SourceOf *>(source)->state; }

    static GSource *make(GSourceFuncs &functions, State state) {
        GSource *source = g_source_new(&functions, sizeof(SourceOf));
        reinterpret_cast<SourceOf *>(source)->state = new State(std::move(state));
        return source;
    }

    static void finalize(GSource *source) { delete reinterpret_cast<SourceOf *>(source)->state; }
};

timespec toTimespec(double seconds) {
    // A zero time would disarm the timer instead of letting it expire at once.
    constexpr double longest = 1e18; // nanoseconds: some thirty years
    const double nanoseconds = std::min(std::max(1.0, std::round(seconds * 1e9)), longest);
    timespec result{};
    result.tv_sec = static_cast<time_t>(nanoseconds / 1e9);
    result.tv_nsec = static_cast<long>(nanoseconds - static_cast<double>(result.tv_sec) * 1e9);
    return result;
}

struct Timer {
    FileDescriptor file;
    bool repeats;
    bool isRunning = false;
    std::function<void()> task;

    Timer(double first, double interval, std::function<void()> function)
        : file(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC))
        , repeats(interval > 0)
        , task(std::move(function)) {
        require(static_cast<bool>(file), "no timer could be made");
        itimerspec setting{};
        setting.it_value = toTimespec(first);
        if (repeats) {
            setting.it_interval = toTimespec(interval);
        }
        timerfd_settime(file.get(), 0, &setting, nullptr);
    }
};

gboolean dispatchTimer(GSource *source, GSourceFunc /*callback*/, gpointer /*data*/) {
    auto &timer = SourceOf<Timer>::stateOf(source);
    std::uint64_t expirations = 0;
    if (read(timer.file.get(), &expirations, sizeof expirations) < 0 || timer.isRunning) {
        return G_SOURCE_CONTINUE;
    }
    // The task may release the timer that it runs in; the source lives on until this returns.
    timer.isRunning = true;
    timer.task();
    timer.isRunning = false;
    return timer.repeats ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
}

GSourceFuncs timerFunctions = // NOLINT(*-non-const-global-variables): GLib takes it as such
    {nullptr, nullptr, dispatchTimer, SourceOf<Timer>::finalize, nullptr, nullptr};

gboolean prepareWatch(GSource *source, gint *timeout) {
    *timeout = -1;
    return SourceOf<GlibMainLoop::FileDescriptorWatch>::stateOf(source).prepare() ? TRUE : FALSE;
}

gboolean dispatchWatch(GSource *source, GSourceFunc /*callback*/, gpointer /*data*/) {
    return SourceOf<GlibMainLoop::FileDescriptorWatch>::stateOf(source).dispatch()
               ? G_SOURCE_CONTINUE
               : G_SOURCE_REMOVE;
}

GSourceFuncs watchFunctions = // NOLINT(*-non-const-global-variables): GLib takes it as such
    {prepareWatch, nullptr, dispatchWatch, SourceOf<GlibMainLoop::FileDescriptorWatch>::finalize,
     nullptr,      nullptr};

gboolean prepareTask(GSource * /*source*/, gint *timeout) {
    *timeout = 0;
    return TRUE;
}

gboolean dispatchTask(GSource *source, GSourceFunc /*callback*/, gpointer /*data*/) {
    SourceOf<std::function<void()>>::stateOf(source)();
    return G_SOURCE_REMOVE;
}

GSourceFuncs taskFunctions = // NOLINT(*-non-const-global-variables): GLib takes it as such
    {prepareTask, nullptr, dispatchTask, SourceOf<std::function<void()>>::finalize,
     nullptr,     nullptr};

} // namespace

GlibMainLoop::GlibMainLoop()
    : backgroundThreads_(
          std::make_unique<WorkerThreads>(backgroundThreadLimit, WorkerThreads::AtEnd::dropTasks)) {
}

GlibMainLoop::~GlibMainLoop() {
    // First the threads, which may still post; then what they posted.
    backgroundThreads_.reset();
    while (GSource *source =
               g_main_context_find_source_by_funcs_user_data(nullptr, &taskFunctions, this)) {
        g_source_destroy(source);
    }
}

Handle GlibMainLoop::watch(int fileDescriptor, FileDescriptorWatch watch) {
    GSource *source = SourceOf<FileDescriptorWatch>::make(watchFunctions, std::move(watch));
    g_source_add_unix_fd(source, fileDescriptor,
                         static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR));
    return attach(source);
}

Handle GlibMainLoop::onUnixSignal(int signal, std::function<void()> function) {
    GSource *source = g_unix_signal_source_new(signal);
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
            (*static_cast<std::function<void()> *>(data))();
            return G_SOURCE_CONTINUE;
        },
        new std::function<void()>(std::move(function)),
        [](gpointer data) { delete static_cast<std::function<void()> *>(data); });
    return attach(source);
}

Handle GlibMainLoop::turnBy(std::function<void()> turn) {
    turn_ = std::move(turn);
    return Handle([this] { turn_ = nullptr; });
}

int GlibMainLoop::run() {
    while (!quitting_) {
        if (const auto turn = turn_) { // held, since what runs may end it
            turn();
        } else {
            g_main_context_iteration(nullptr, TRUE);
        }
    }
    return status_;
}

void GlibMainLoop::quit(int status) {
    quitting_ = true;
    status_ = status;
}

double GlibMainLoop::now() const {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

void GlibMainLoop::post(std::function<void()> task) {
    // GLib dispatches sources of one priority in the order in which they were attached, and none in
    // the turn that attaches it.
    const GlibPointer<GSource> source(
        SourceOf<std::function<void()>>::make(taskFunctions, std::move(task)));
    g_source_set_callback(source.get(), nullptr, this, nullptr); // to find what is left at the end
    g_source_attach(source.get(), nullptr);
}

Handle GlibMainLoop::after(double seconds, std::function<void()> task) {
    return schedule(seconds, 0, std::move(task));
}

Handle GlibMainLoop::every(double seconds, std::function<void()> task) {
    return schedule(seconds, seconds, std::move(task));
}

Handle GlibMainLoop::schedule(double first, double interval, std::function<void()> task) {
    GSource *source =
        SourceOf<Timer>::make(timerFunctions, Timer(first, interval, std::move(task)));
    g_source_add_unix_fd(source, SourceOf<Timer>::stateOf(source).file.get(), G_IO_IN);
    return attach(source);
}

void GlibMainLoop::runInBackground(QualityOfService quality, std::function<void()> task) {
    backgroundThreads_->post(std::move(task), quality == QualityOfService::userInitiated
                                                  ? WorkerThreads::Priority::urgent
                                                  : WorkerThreads::Priority::ordinary);
}

} // namespace lumo::freedesktop

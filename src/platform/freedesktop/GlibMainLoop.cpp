#include "platform/freedesktop/GlibMainLoop.h"

#include "support/Invariant.h"

#include <glib-unix.h>
#include <glib.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <condition_variable>
#include <ctime>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

namespace lumo::freedesktop {

namespace {

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
    int fileDescriptor;
    bool repeats;
    bool isRunning = false;
    std::function<void()> task;

    Timer(double first, double interval, std::function<void()> function)
        : fileDescriptor(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC))
        , repeats(interval > 0)
        , task(std::move(function)) {
        require(fileDescriptor >= 0, "no timer could be made");
        itimerspec setting{};
        setting.it_value = toTimespec(first);
        if (repeats) {
            setting.it_interval = toTimespec(interval);
        }
        timerfd_settime(fileDescriptor, 0, &setting, nullptr);
    }

    Timer(Timer &&other) noexcept
        : fileDescriptor(std::exchange(other.fileDescriptor, -1))
        , repeats(other.repeats)
        , task(std::move(other.task)) {}
    Timer &operator=(Timer &&) = delete;

    ~Timer() {
        if (fileDescriptor >= 0) {
            close(fileDescriptor);
        }
    }
};

gboolean dispatchTimer(GSource *source, GSourceFunc /*callback*/, gpointer /*data*/) {
    auto &timer = SourceOf<Timer>::stateOf(source);
    std::uint64_t expirations = 0;
    if (read(timer.fileDescriptor, &expirations, sizeof expirations) < 0 || timer.isRunning) {
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

} // namespace

// Posted tasks, from any thread to the main one.
class GlibMainLoop::TaskQueue {
  public:
    TaskQueue()
        : source_(attach(makeSource(*this))) {}

    void push(std::function<void()> task) {
        {
            const std::lock_guard lock(mutex_);
            tasks_.push_back(std::move(task));
        }
        g_main_context_wakeup(nullptr);
    }

  private:
    struct Reference {
        TaskQueue *queue;
    };

    static GSource *makeSource(TaskQueue &queue) {
        static GSourceFuncs functions = {prepare, nullptr, dispatch, SourceOf<Reference>::finalize,
                                         nullptr, nullptr};
        return SourceOf<Reference>::make(functions, Reference{&queue});
    }

    static gboolean prepare(GSource *source, gint *timeout) {
        auto &queue = *SourceOf<Reference>::stateOf(source).queue;
        *timeout = -1;
        const std::lock_guard lock(queue.mutex_);
        return queue.tasks_.empty() ? FALSE : TRUE;
    }

    static gboolean dispatch(GSource *source, GSourceFunc /*callback*/, gpointer /*data*/) {
        auto &queue = *SourceOf<Reference>::stateOf(source).queue;
        // What is posted meanwhile waits for the next turn.
        for (auto left = queue.count(); left > 0; --left) {
            if (const auto task = queue.takeFirst()) {
                task();
            }
        }
        return G_SOURCE_CONTINUE;
    }

    std::size_t count() {
        const std::lock_guard lock(mutex_);
        return tasks_.size();
    }

    // Empty when a loop that a task turned has run everything.
    std::function<void()> takeFirst() {
        const std::lock_guard lock(mutex_);
        if (tasks_.empty()) {
            return nullptr;
        }
        auto task = std::move(tasks_.front());
        tasks_.pop_front();
        return task;
    }

    std::mutex mutex_;
    std::deque<std::function<void()>> tasks_;
    Handle source_;
};

// A few threads, started when first needed. What is user-initiated goes before what is not.
class GlibMainLoop::BackgroundThreads {
  public:
    ~BackgroundThreads() {
        {
            const std::lock_guard lock(mutex_);
            stopping_ = true;
        }
        wakeUp_.notify_all();
        for (auto &thread : threads_) {
            thread.join();
        }
    }

    void run(QualityOfService quality, std::function<void()> task) {
        {
            const std::lock_guard lock(mutex_);
            queues_[static_cast<std::size_t>(quality)].push_back(std::move(task));
            if (idle_ == 0 && threads_.size() < threadLimit) {
                threads_.emplace_back([this] { work(); });
            }
        }
        wakeUp_.notify_one();
    }

  private:
    static constexpr std::size_t threadLimit = 2;

    bool hasTask() const { return !queues_[0].empty() || !queues_[1].empty(); }

    void work() {
        std::unique_lock lock(mutex_);
        while (true) {
            ++idle_;
            wakeUp_.wait(lock, [this] { return stopping_ || hasTask(); });
            --idle_;
            if (stopping_) {
                return;
            }
            auto &queue = queues_[0].empty() ? queues_[1] : queues_[0];
            auto task = std::move(queue.front());
            queue.pop_front();
            lock.unlock();
            task();
            task = nullptr;
            lock.lock();
        }
    }

    std::mutex mutex_;
    std::condition_variable wakeUp_;
    std::array<std::deque<std::function<void()>>, 2> queues_;
    std::vector<std::thread> threads_;
    std::size_t idle_ = 0;
    bool stopping_ = false;
};

GlibMainLoop::GlibMainLoop()
    : tasks_(std::make_unique<TaskQueue>())
    , backgroundThreads_(std::make_unique<BackgroundThreads>()) {
}

GlibMainLoop::~GlibMainLoop() {
    // First the threads, which may still post; then what they posted to.
    backgroundThreads_.reset();
    tasks_.reset();
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

int GlibMainLoop::run() {
    while (!quitting_) {
        g_main_context_iteration(nullptr, TRUE);
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
    tasks_->push(std::move(task));
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
    g_source_add_unix_fd(source, SourceOf<Timer>::stateOf(source).fileDescriptor, G_IO_IN);
    return attach(source);
}

void GlibMainLoop::runInBackground(QualityOfService quality, std::function<void()> task) {
    backgroundThreads_->run(quality, std::move(task));
}

} // namespace lumo::freedesktop

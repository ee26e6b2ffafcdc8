#include "ui/HostedFrames.h"

#include "ui/WindowFrame.h"

#include <QWidget>
#include <utility>

namespace lumo {

namespace {

// The toolkit knows its native views by number.
HostedView hostedView(QWidget &view) {
    return {reinterpret_cast<void *>(view.winId()), // NOLINT(performance-no-int-to-ptr)
            {static_cast<double>(view.width()), static_cast<double>(view.height())}};
}

// A dialog that the view's window waits for gets the keys, else the view.
void giveKeysTo(QWidget &view) {
    withDialogs(view).last()->activateWindow();
}

class HostedStatusPopover final : public Popover {
  public:
    HostedStatusPopover(ViewHost &host, std::function<std::unique_ptr<QWidget>()> makeView,
                        DiscardView discard)
        : host_(host)
        , makeView_(std::move(makeView))
        , discard_(std::move(discard)) {}

    ~HostedStatusPopover() override { close(); }
    HostedStatusPopover(const HostedStatusPopover &) = delete;
    HostedStatusPopover &operator=(const HostedStatusPopover &) = delete;

    bool isShown() const override { return popover_ && popover_->isShown(); }

    void show(const StatusItemPlace & /*place*/) override {
        close();
        view_ = makeView_();
        popover_ = host_.makePopover(hostedView(*view_), [this] { close(); });
        // The frame first: the toolkit opens a window of its own for a view that is in none. The
        // view is what keys go to from then on.
        popover_->show();
        view_->show();
        giveKeysTo(*view_);
    }

    void close() override {
        popover_.reset();
        if (view_) {
            discard_(std::move(view_));
        }
    }

  private:
    ViewHost &host_;
    std::function<std::unique_ptr<QWidget>()> makeView_;
    DiscardView discard_;
    std::unique_ptr<QWidget> view_;
    std::unique_ptr<HostedPopover> popover_;
};

class HostedInterfaceWindow final : public InterfaceWindow {
  public:
    HostedInterfaceWindow(ViewHost &host, HostedWindowKind kind, const std::string &title,
                          std::unique_ptr<QWidget> view, std::function<void()> onWillClose,
                          DiscardView discard)
        : discard_(std::move(discard))
        , view_(std::move(view))
        , window_(host.makeWindow(kind, title, hostedView(*view_), std::move(onWillClose))) {
        view_->show();
    }

    ~HostedInterfaceWindow() override {
        window_.reset();
        discard_(std::move(view_));
    }
    HostedInterfaceWindow(const HostedInterfaceWindow &) = delete;
    HostedInterfaceWindow &operator=(const HostedInterfaceWindow &) = delete;

    void makeKeyAndOrderFront() override {
        window_->makeKeyAndOrderFront();
        giveKeysTo(*view_);
    }

  private:
    DiscardView discard_;
    std::unique_ptr<QWidget> view_;
    std::unique_ptr<HostedWindow> window_;
};

} // namespace

std::unique_ptr<Popover> makeHostedPopover(ViewHost &host,
                                           std::function<std::unique_ptr<QWidget>()> makeView,
                                           DiscardView discard) {
    return std::make_unique<HostedStatusPopover>(host, std::move(makeView), std::move(discard));
}

std::unique_ptr<InterfaceWindow> makeHostedWindow(ViewHost &host, HostedWindowKind kind,
                                                  const std::string &title,
                                                  std::unique_ptr<QWidget> view,
                                                  std::function<void()> onWillClose,
                                                  DiscardView discard) {
    return std::make_unique<HostedInterfaceWindow>(host, kind, title, std::move(view),
                                                   std::move(onWillClose), std::move(discard));
}

} // namespace lumo

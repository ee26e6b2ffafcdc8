// Shows the real program at work on a desktop of its own, and saves pictures of it. Every picture
// is checked for what it is said to show.

#include "desktop/LumoProcess.h"
#include "desktop/PrivateDesktop.h"
#include "desktop/SampleApplication.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace lumo::desktop {
namespace {

namespace fs = std::filesystem;

// A sky after sunset behind two ranges of hills.
Picture wallpaper(const Area &area) {
    Picture picture(area.width, area.height);
    const auto mix = [](int from, int to, double share) {
        return static_cast<std::uint8_t>(std::lround(from + (to - from) * share));
    };
    for (int x = 0; x < area.width; ++x) {
        const double across = static_cast<double>(x) / area.width;
        const double far = 0.62 + 0.06 * std::sin(across * 7) + 0.03 * std::sin(across * 19 + 1);
        const double near = 0.78 + 0.07 * std::sin(across * 5 + 2) + 0.02 * std::sin(across * 23);
        for (int y = 0; y < area.height; ++y) {
            const double down = static_cast<double>(y) / area.height;
            Colour &pixel = picture.at(x, y);
            if (down > near) {
                pixel = {38, mix(70, 52, down), mix(92, 60, down)};
            } else if (down > far) {
                pixel = {mix(96, 70, down), mix(104, 84, down), mix(150, 120, down)};
            } else {
                pixel = {mix(84, 246, down / 0.7), mix(110, 190, down / 0.7),
                         mix(190, 160, down / 0.7)};
            }
        }
    }
    return picture;
}

// The picture with every colour so much nearer to the other.
Picture faded(Picture picture, Colour other, double share) {
    const auto mix = [share](std::uint8_t from, std::uint8_t to) {
        return static_cast<std::uint8_t>(std::lround(from + (to - from) * share));
    };
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            Colour &pixel = picture.at(x, y);
            pixel = {mix(pixel.red, other.red), mix(pixel.green, other.green),
                     mix(pixel.blue, other.blue)};
        }
    }
    return picture;
}

class Demo {
  public:
    explicit Demo(fs::path folder)
        : folder_(std::move(folder)) {
        fs::create_directories(folder_);
        session_.setWallpaper(wallpaper(session_.screenArea()));
    }

    void run() {
        for (const SampleApplication &application : applications_) {
            bringForward(application);
            plain_.push_back(session_.stillPicture());
        }
        save(plain_.back(), "before", "the desktop without the effect");
        showFocus();
        for (const auto &[mode, what] :
             {std::pair{"dim", "dim: the rest is darkened"},
              std::pair{"softBlur", "soft blur: the rest blurs behind fine grain"},
              std::pair{"tint", "tint: the rest turns blue"}}) {
            showMode(mode, what);
        }
        showPeek();
        showOn("light", Colour{255, 255, 255});
        showOn("dark", Colour{6, 8, 12});
    }

  private:
    void bringForward(const SampleApplication &application) {
        session_.activate(application.window());
        const bool isInFront = session_.eventually([&] {
            for (const SampleApplication &other : applications_) {
                if (&other != &application &&
                    !session_.isAbove(application.window(), other.window())) {
                    return false;
                }
            }
            return session_.activeWindow() == application.window();
        });
        if (!isInFront) {
            throw std::runtime_error("a window does not come forward");
        }
    }

    void save(const Picture &picture, const std::string &name, const std::string &what) {
        const fs::path file = folder_ / (name + ".png");
        picture.savePng(file);
        std::printf("%s: %s\n", file.c_str(), what.c_str());
        std::fflush(stdout);
    }

    // The share of the pixels outside the clear window that look different; absent when the clear
    // window does.
    double changedShare(const Picture &shown, std::size_t index) {
        const Picture &plain = plain_[index];
        const Area clear = session_.frameAreaOf(applications_[index].window());
        if (!shown.differenceFrom(plain, clear).empty()) {
            return -1;
        }
        long changed = 0;
        for (int y = 0; y < shown.height(); ++y) {
            for (int x = 0; x < shown.width(); ++x) {
                changed += shown.at(x, y) != plain.at(x, y) ? 1 : 0;
            }
        }
        const Area all = session_.screenArea();
        return static_cast<double>(changed) / (static_cast<double>(all.width) * all.height -
                                               static_cast<double>(clear.width) * clear.height);
    }

    // Waits for a picture in which the window is exactly as without the effect and all else is not,
    // as the mode wants it.
    Picture pictureWithClear(LumoProcess &lumo, std::size_t index, const std::string &mode) {
        Picture shown;
        const auto isRight = [&] {
            shown = session_.picture();
            const Picture::Mean now = shown.mean(session_.screenArea());
            const Picture::Mean before = plain_[index].mean(session_.screenArea());
            const bool hasModesLook =
                mode == "dim" ? now.red < before.red && now.blue < before.blue
                              : mode != "tint" || now.blue - now.red > before.blue - before.red;
            return hasModesLook && changedShare(shown, index) > 0.95;
        };
        if (!session_.eventually(isRight)) {
            shown.savePng(folder_ / "wrong.png");
            throw std::runtime_error("the effect " + mode + " is not as it should be, see " +
                                     (folder_ / "wrong.png").string() + "; " +
                                     lumo.process().report());
        }
        return session_.stillPicture();
    }

    void showFocus() {
        LumoProcess lumo(desktop_, shownEffect("softBlur", 0.6));
        for (std::size_t index = 0; index < applications_.size(); ++index) {
            bringForward(applications_[index]);
            save(pictureWithClear(lumo, index, "softBlur"), "focus-" + std::to_string(index + 1),
                 names_[index] + " has the focus and stays clear");
        }
        stop(lumo);
    }

    void showMode(const std::string &mode, const std::string &what) {
        LumoProcess lumo(desktop_, shownEffect(mode, 0.6));
        save(pictureWithClear(lumo, 2, mode), "mode-" + mode, what);
        stop(lumo);
    }

    // Soft blur over a wallpaper that is nearly of that colour.
    void showOn(const std::string &name, Colour colour) {
        session_.setWallpaper(faded(wallpaper(session_.screenArea()), colour, 0.8));
        plain_[2] = session_.stillPicture();
        LumoProcess lumo(desktop_, shownEffect("softBlur", 0.6));
        save(pictureWithClear(lumo, 2, "softBlur"), "softBlur-" + name,
             "soft blur on a " + name + " wallpaper");
        stop(lumo);
    }

    void showPeek() {
        LumoProcess lumo(desktop_, shownEffect("dim", 0.6));
        pictureWithClear(lumo, 2, "dim");
        session_.press({Key::command, Key::option, Key::tab});
        Picture shown;
        const auto isRevealed = [&] {
            shown = session_.picture();
            return shown.differenceFrom(plain_[2], session_.screenArea()).empty();
        };
        if (!session_.eventually(isRevealed, Seconds(5))) {
            throw std::runtime_error("the Peek hot key did not reveal the desktop; " +
                                     lumo.process().report());
        }
        save(shown, "peek", "Peek reveals the whole desktop while the effect stays on");
        pictureWithClear(lumo, 2, "dim");
        stop(lumo);
    }

    void stop(LumoProcess &lumo) {
        if (lumo.stop() != 0) {
            throw std::runtime_error("it did not stop well: " + lumo.process().report());
        }
    }

    fs::path folder_;
    PrivateDesktop desktop_{{.width = 1600, .height = 1000}};
    DesktopSession &session_ = desktop_.session();
    const std::vector<std::string> names_ = {"Letters", "Ledger", "Novel"};
    std::array<SampleApplication, 3> applications_ = {
        SampleApplication(
            desktop_, "Letters",
            {{.title = "Letters", .area = {90, 90, 720, 520}, .colour = "#b4574a", .page = true}}),
        SampleApplication(
            desktop_, "Ledger",
            {{.title = "Ledger", .area = {820, 60, 640, 470}, .colour = "#4a8a6c", .page = true}}),
        SampleApplication(
            desktop_, "Novel",
            {{.title = "Novel", .area = {470, 340, 800, 560}, .colour = "#4a6cb4", .page = true}})};
    std::vector<Picture> plain_; // without the effect, with each application in front
};

} // namespace
} // namespace lumo::desktop

int main(int argc, char **argv) {
    try {
        lumo::desktop::Demo(argc > 1 ? argv[1] : "demo").run();
        return 0;
    } catch (const std::exception &problem) {
        std::printf("The demo failed: %s\n", problem.what());
        return 1;
    }
}

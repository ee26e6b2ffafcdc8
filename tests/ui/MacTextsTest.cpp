#include "InterfacePages.h"
#include "settings/CoverLockPreset.h"
#include "settings/EffectMode.h"

#include <gmock/gmock.h>

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <initializer_list>

namespace lumo {
namespace {

// Everything that a person reads in the view, or has read to them.
QStringList textsOf(const QWidget &view) {
    QStringList texts;
    for (const auto *widget : view.findChildren<QWidget *>()) {
        texts << widget->accessibleName() << widget->accessibleDescription();
        if (const auto *label = qobject_cast<const QLabel *>(widget)) {
            texts << label->text();
        } else if (const auto *button = qobject_cast<const QAbstractButton *>(widget)) {
            texts << button->text();
        } else if (const auto *field = qobject_cast<const QLineEdit *>(widget)) {
            texts << field->placeholderText();
        } else if (const auto *picker = qobject_cast<const QComboBox *>(widget)) {
            for (int item = 0; item < picker->count(); ++item) {
                texts << picker->itemText(item);
            }
        } else if (const auto *list = qobject_cast<const QAbstractItemView *>(widget)) {
            for (int row = 0; row < list->model()->rowCount(); ++row) {
                texts << list->model()->index(row, 0).data().toString();
            }
        }
    }
    return texts;
}

// The pages' names begin like this. Where settings choose among texts, each has its turn.
QStringList textsOfPages(const char *prefix) {
    QStringList texts;
    for (const auto &page : test::interfacePages()) {
        const bool isExtreme = page.name.starts_with(std::string("extreme-") + prefix);
        if (!page.name.starts_with(prefix) && !isExtreme) {
            continue;
        }
        for (std::size_t choice = 0; choice < (isExtreme ? 1 : allEffectModes.size()); ++choice) {
            test::InterfaceStage stage;
            stage.settings.isEnabled.set(true);
            stage.settings.effectMode.set(allEffectModes.at(choice));
            stage.settings.coverWindowLockDuration.set(duration(allCoverLockPresets.at(choice)));
            stage.settings.useWhitelistMode.set(choice == 1);
            const auto view = page.make(stage);
            test::showPage(page, *view, stage);
            texts << textsOf(*view);
        }
    }
    return texts;
}

// The words of the Mac are a promise: each of these is a text of its own on the pages.
TEST(MacTexts, EveryTextStandsOnItsPage) {
    const struct {
        const char *pages;
        std::initializer_list<const char *> texts;
    } table[] = {
        {"popover",
         {"Lumo is On",
          "Lumo is Off",
          "Turn Lumo On",
          "Turn Lumo Off",
          "Fix Now",
          "No Cover App selected",
          "Peek Mode",
          "Temporary reveal (does not turn Lumo off)",
          "Set Cover to Frontmost",
          "Enable Privacy Cover with current app ⌘⌥C",
          "Current: org.example.Editor ⌘⌥C",
          "Cover set: Editor",
          "Choose Cover App",
          "Pick from running apps",
          "Selected: Editor",
          "Check for Updates",
          "Settings",
          "Quit Lumo",
          "Privacy Cover",
          "Off",
          "Shake to Toggle",
          "Move the mouse left and right four times",
          "Keyboard Shortcuts",
          "Toggle ⌃Space, Peek(temp) ⌘⌥Tab",
          "Open Full Settings...",
          "Clear selected cover app",
          "None"}},
        {"guidance",
         {"Welcome to Lumo", "Focus and privacy for your Mac",
          "Lumo needs the following permission to work:", "Accessibility Permission",
          "Used to detect the active window and apply the focus effect correctly.",
          "Open System Settings", "I Granted Access, Continue"}},
        {"settings-general",
         {"General", "Appearance", "Rules", "Shortcuts", "Launch at login",
          "Pause in fullscreen apps", "Peek Duration", "Version 1.0.0",
          "Focus and privacy for your Mac"}},
        {"settings-appearance",
         {"Effect Type", "Dim", "Soft Blur", "Tint",
          "Darkens background windows with a translucent overlay.",
          "Blurs background windows to reduce visual distraction.",
          "Adds a subtle tint over background windows.", "Blur-free Mode",
          "Turn blur off while keeping overlay styling for a classic dimming look.", "Intensity",
          "Transition Speed"}},
        {"settings-rules",
         {"Use Privacy Cover",
          "Choose one app to stay clear while other windows are blurred.",
          "Cover App",
          "Current Cover App: Editor",
          "Runtime: Cover active",
          "Use Frontmost App",
          "Refresh App List",
          "Bring Cover App forward when turning Lumo on",
          "Keep trying to keep Cover App on top",
          "Auto-assign frontmost app if Cover App is empty when turning Lumo on",
          "Lock Stability",
          "Fast",
          "Balanced",
          "Stable",
          "Fast (200 ms): Lower latency, may switch targets more often.",
          "Balanced (350 ms): Balanced responsiveness and stability.",
          "Stable (500 ms): Most stable target lock, with a bit more lag.",
          "Multi-screen Mode",
          "Per Screen",
          "Global",
          "Per Screen locks focus per display. Global uses one focus target across all displays.",
          "Cover App is set. Per Screen may still appear globally locked.",
          "Clear Cover App",
          "Whitelist",
          "Blacklist",
          "Only whitelisted apps will be affected by Lumo.",
          "Blacklisted apps will not be affected by Lumo.",
          "Search apps...",
          "Finder",
          "Dock",
          "System Settings",
          "Control Center",
          "iMovie",
          "Final Cut Pro",
          "Safari",
          "Chrome Canary",
          "VS Code",
          "Things 3",
          "Spotify"}},
        {"settings-shortcuts",
         {"Enable Toggle Shortcut",
          "Enable Toggle Shortcut: ⌃Space",
          "Enable Peek Shortcut",
          "Enable Peek Shortcut: ⌘⌥Tab",
          "Peek is temporary and does not turn Lumo off.",
          "Enable Set Cover Shortcut",
          "Enable Set Cover Shortcut: ⌘⌥C",
          "Press keys...",
          "Cancel",
          "Toggle Lumo with 4 quick mouse swipes",
          "Quickly move the mouse left and right four times to turn Lumo on or off.",
          "Shake Action: Toggle",
          "Shake Toggle Modifier",
          "Shake Action: Peek",
          "Shake Peek Modifier",
          "None",
          "Shift",
          "Option",
          "Command",
          "Control",
          "Shake Sensitivity",
          "Click a shortcut field, then press the key combination you want to use.",
          "Command, Option, Control, and Shift combinations are supported.",
          "Set Cover shortcut uses current frontmost app and enables Privacy Cover.",
          "Peek only reveals temporarily; use Toggle to turn Lumo on or off.",
          "Reset to Defaults"}},
    };
    for (const auto &[pages, wanted] : table) {
        const auto texts = textsOfPages(pages);
        for (const auto *text : wanted) {
            EXPECT_TRUE(texts.contains(QString::fromUtf8(text))) << pages << ": " << text;
        }
    }
}

} // namespace
} // namespace lumo

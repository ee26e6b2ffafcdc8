#pragma once

#include "InterfaceStage.h"

#include <QWidget>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace lumo::test {

// One thing that the interface can show.
struct InterfacePage {
    std::string name;
    // On a stage that lives longer. Not shown yet.
    std::function<std::unique_ptr<QWidget>(InterfaceStage &)> make;
    // What the user does once it is shown.
    std::function<void(QWidget &)> act = {};
    // Has its picture in the documentation; the others are for a look at what may go wrong.
    bool isDocumented = true;
    bool isMirrored = false; // for a language that is written from right to left
};

std::vector<InterfacePage> interfacePages();

// Shows the page, which has been made on this stage, and has the user act on it. Whatever follows
// from that has happened when this returns.
void showPage(const InterfacePage &page, QWidget &view, InterfaceStage &stage);

} // namespace lumo::test

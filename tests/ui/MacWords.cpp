#include "DesktopWords.h"
#include "platform/macos/logic/MacVocabulary.h"

const lumo::Vocabulary &lumo::test::desktopWords() {
    return macos::vocabulary();
}

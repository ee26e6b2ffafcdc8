#include "DesktopWords.h"
#include "platform/freedesktop/DesktopVocabulary.h"

const lumo::Vocabulary &lumo::test::desktopWords() {
    return freedesktop::vocabulary();
}

#include "Gallery.h"

#include <cstdlib>
#include <iostream>

// Draws every page of the interface, in light and dark and at two scales, into a directory.
int main(int argc, char **argv) {
    if (argc != 2) {
        std::cerr << "usage: lumo-ui-gallery <directory>\n";
        return EXIT_FAILURE;
    }
    return lumo::test::drawGallery(argv[1]) ? EXIT_SUCCESS : EXIT_FAILURE;
}

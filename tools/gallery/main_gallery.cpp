#include "Gallery.h"

#include <cstdlib>
#include <iostream>

int main(int argc, char **argv) {
    if (argc < 2) {
        std::cerr << "usage: lumo-ui-gallery <directory> [<scale>...]\n"
                     "draws what the documentation shows; with scales, everything at these\n";
        return EXIT_FAILURE;
    }
    std::vector<double> scales;
    for (int index = 2; index < argc; ++index) {
        scales.push_back(std::strtod(argv[index], nullptr));
    }
    return lumo::test::drawGallery(argv[1], scales) ? EXIT_SUCCESS : EXIT_FAILURE;
}

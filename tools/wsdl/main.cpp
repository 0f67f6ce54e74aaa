// wsdl-writer FILE: writes the service description into FILE.

#include <cstdio>
#include <fstream>

#include "tools/wsdl/ServiceDescription.h"

using namespace quorbel;

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: wsdl-writer FILE\n");
        return 2;
    }
    std::ofstream file(argv[1], std::ios::binary);
    if (!(file << ServiceDescription()).flush()) {
        std::fprintf(stderr, "wsdl-writer: cannot write %s\n", argv[1]);
        return 1;
    }
    return 0;
}

// wsdl-writer DESCRIPTION PAGE DOCUMENTATION: writes the service description, the page for browsers and the page without
// forms into the three files.

#include <cstdio>
#include <fstream>

#include "tools/wsdl/ServiceDescription.h"
#include "tools/wsdl/ServicePage.h"

using namespace quorbel;

namespace {

bool WriteFile(const char* path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    if ((file << text).flush()) return true;
    std::fprintf(stderr, "wsdl-writer: cannot write %s\n", path);
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: wsdl-writer DESCRIPTION PAGE DOCUMENTATION\n");
        return 2;
    }
    const bool written = WriteFile(argv[1], ServiceDescription()) &&
                         WriteFile(argv[2], ServicePage(PageForms::With)) &&
                         WriteFile(argv[3], ServicePage(PageForms::Without));
    return written ? 0 : 1;
}

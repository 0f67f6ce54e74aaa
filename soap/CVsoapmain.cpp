// The program: the web server starts it once for each request, in the directory of CGI programs.

#include "process/ServeRequest.h"

int main(int argc, char** argv) {
    static int running = 0;
    if (running != 0) return -1;
    running = 1;
    return quorbel::ServeRequest(argc > 0 && argv[0] != nullptr ? argv[0] : "");
}

#include <CLI/CLI.hpp>

#include "tools/cvlogs/Commands.h"
#include "tools/operator/Program.h"

using namespace quorbel;

int main(int argc, char** argv) {
    CLI::App app{
        "Looks after the system's logs: queries log databases, and checks and tries the configuration.",
        "cvlogs"};
    app.require_subcommand(1);
    DeclareQuery(app);
    DeclareCount(app);
    DeclareModules(app);
    DeclareTruncate(app);
    DeclareDrop(app);
    DeclareCheck(app);
    DeclareWrite(app);
    return RunTool(app, argc, argv);
}

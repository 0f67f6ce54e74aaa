#pragma once

namespace CLI {
class App;
}

namespace quorbel {

// Each adds one command to the program: its options, and the callback that runs it.
void DeclareQuery(CLI::App& app);
void DeclareCount(CLI::App& app);
void DeclareModules(CLI::App& app);
void DeclareTruncate(CLI::App& app);
void DeclareDrop(CLI::App& app);
void DeclareCheck(CLI::App& app);
void DeclareWrite(CLI::App& app);

}  // namespace quorbel

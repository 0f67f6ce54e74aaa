// Nothing: CMake wants a source file in the target that precompiles the test library's headers.

#pragma once

#include <string>

/// A failed operation on a local database: the program's own message, the unit and line that raised it, and
/// SQLite's result code and text.
///
/// Has no base class, so that a handler for std::exception does not catch it: name it beside that one.
class CVDBexception {
public:
    CVDBexception(int errorCode, std::string file, int line, std::string message, std::string systemMessage);

    /// One line for a log.
    std::string ToString() const;

    const std::string& GetMessage() const { return message_; }
    const std::string& GetFile() const { return file_; }
    int GetLine() const { return line_; }
    int GetErrorCode() const { return errorCode_; }
    const std::string& GetSystemMessage() const { return systemMessage_; }

private:
    std::string message_;
    std::string file_;
    int line_;
    int errorCode_;
    std::string systemMessage_;
};

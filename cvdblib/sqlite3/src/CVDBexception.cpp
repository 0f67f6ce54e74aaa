#include "cvdblib/sqlite3/src/CVDBexception.h"

#include <cstdio>
#include <utility>

CVDBexception::CVDBexception(int errorCode, std::string file, int line, std::string message,
                             std::string systemMessage)
    : message_(std::move(message)),
      file_(std::move(file)),
      line_(line),
      errorCode_(errorCode),
      systemMessage_(std::move(systemMessage)) {}

std::string CVDBexception::ToString() const {
    char code[16];
    std::snprintf(code, sizeof code, "%X", static_cast<unsigned>(errorCode_));
    return std::string("Exception raised! Error code[") + code + "] File[" + file_ + "] Line[" +
           std::to_string(line_) + "] Msg[" + message_ + "] SysMsg[" + systemMessage_ + "]";
}

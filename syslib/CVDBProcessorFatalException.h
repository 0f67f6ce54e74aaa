#pragma once

#include <exception>
#include <string>
#include <utility>

/// The log database could not do what was asked; carries the reason, mostly SQLite's own text.
class CVDBProcessorFatalException : public std::exception {
public:
    explicit CVDBProcessorFatalException(std::string text) : text_(std::move(text)) {}

    const char* what() const noexcept override { return text_.c_str(); }

private:
    std::string text_;
};

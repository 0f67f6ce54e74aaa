#include "syslib/LogReport.h"

#include <cxxabi.h>

#include <exception>

#include "CVException.h"
#include "CVsystemLog.h"

namespace quorbel {

namespace {

std::string TextOfCaughtException() {
    try {
        throw;
    } catch (const abi::__forced_unwind&) {
        throw;
    } catch (const CVException& failure) {
        return failure.ToString();
    } catch (const std::exception& failure) {
        return failure.what();
    } catch (...) {
        return {};
    }
}

}  // namespace

void ReportLogFailure(const char* source, const std::string& identity, const std::string& text) {
    std::string escaped;  // the system log interprets "%%" and "%m"
    for (const char c : text) escaped.append(c == '%' ? 2 : 1, c);
    CVsystemLog::WriteError(source, identity.c_str(), "%s", escaped.c_str());
}

void ReportCaughtException(const char* source, const std::string& identity, const char* unknown) {
    const std::string text = TextOfCaughtException();
    ReportLogFailure(source, identity, text.empty() ? unknown : text);
}

}  // namespace quorbel

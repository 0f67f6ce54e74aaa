#include "CVException.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <exception>

TEST(CVException, RendersItselfAsOneLine) {
    EXPECT_EQ(CVException("CVunit", 7, "Broken", "No space").ToString(),
              "Exception raised! File[CVunit] Line[7] Msg[Broken] SysMsg[No space]");
    errno = ENOENT;
    const CVioException io("/tmp/x", "CVioFile", 120, "File Open Failed", GetSystemErrorText());
    EXPECT_EQ(io.ToString(),
              "Exception raised! IO path[/tmp/x] File[CVioFile] Line[120] Msg[File Open Failed] SysMsg[" +
                  std::string(std::strerror(ENOENT)) + "]");
    EXPECT_EQ(CVconException(42, "Lock failed").ToString(),
              "Exception raised! ThreadID[42] File[] Line[0] Msg[Lock failed] SysMsg[]");
}

TEST(CVException, AnswersWhatWithTheLibrarysText) {
    const CVException thrown("CVunit", 1, "Broken");
    EXPECT_STREQ(static_cast<const std::exception&>(thrown).what(), std::exception().what());
}

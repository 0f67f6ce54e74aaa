#include "soap/AnswerWriter.h"

#include <gtest/gtest.h>

#include "soap/RequestGlobals.h"
#include "util/BoundedText.h"

using namespace quorbel;

namespace {

/// What `write` puts on standard output.
template <typename Writes>
std::string Written(Writes write) {
    testing::internal::CaptureStdout();
    write();
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

class AnswerWriterTest : public testing::Test {
protected:
    void SetUp() override {
        CopyText(m_szHostName, "pager-host");
        CopyText(g_szCommand, "SendStdMessage");
    }
    void TearDown() override { BeginAnswer(); }
};

}  // namespace

TEST_F(AnswerWriterTest, FaultIsThisDocument) {
    EXPECT_EQ(Written([] { WriteFault("2004", "Missing <URL>"); }),
              R"(<?xml version = '1.0' encoding = 'UTF-8' standalone = 'no'?>
<SOAP-ENV:Envelope xmlns:SOAPSDK1='http://www.w3.org/2001/XMLSchema' xmlns:SOAPSDK2='http://www.w3.org/2001/XMLSchema-instance' xmlns:SOAPSDK3='http://schemas.xmlsoap.org/soap/encoding/' xmlns:SOAP-ENV='http://schemas.xmlsoap.org/soap/envelope/'>
<SOAP-ENV:Body SOAP-ENV:encodingStyle='http://schemas.xmlsoap.org/soap/encoding/'>
 <SOAP-ENV:Fault>
    <faultcode>SOAP-ENV:Server</faultcode>
    <faultstring>2004 Missing &lt;URL&gt;</faultstring>
    <faultactor>http://pager-host/quorbel.wsdl</faultactor>
    <detail>
        <serror:errorInfo xmlns:serror='http://quorbel.example/error/'>
           <serror:returnCode/>
           <serror:serverErrorInfo>
              <serror:description></serror:description>
              <serror:source>Quorbel errors</serror:source>
           </serror:serverErrorInfo>
        </serror:errorInfo>
    </detail>
 </SOAP-ENV:Fault>
</SOAP-ENV:Body>
</SOAP-ENV:Envelope>
)");
}

TEST_F(AnswerWriterTest, NothingFollowsAFault) {
    const auto first = Written([] { WriteFault("2301 Invalid log directory"); });
    EXPECT_NE(first.find("<faultstring>2301 Invalid log directory</faultstring>"), std::string::npos);
    EXPECT_EQ(Written([] { WriteResponse("OK"); }), "");
    EXPECT_EQ(Written([] { WriteFault("2012", "again"); }), "");
}

TEST_F(AnswerWriterTest, ResponsesFollowEachOther) {
    const auto both = Written([] {
        WriteResponse("one");
        WriteResponse("two");
    });
    EXPECT_LT(both.find("<SendStdMessageResult>one<"), both.find("<SendStdMessageResult>two<"));
}

TEST_F(AnswerWriterTest, HeaderIsOneLineAndAnEmptyOne) {
    EXPECT_EQ(Written([] { WriteHeader(); }), "Content-type: text/xml\n\n");
}

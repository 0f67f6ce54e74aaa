#include "process/DeliveryEntry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

using namespace quorbel;
using std::chrono::milliseconds;

namespace {

Delivery Answered() {
    Delivery delivery;
    delivery.at = std::chrono::system_clock::from_time_t(1795273500) + milliseconds(123);
    delivery.id = "7f3a9c21";
    delivery.method = "SendStdMessage";
    delivery.to = "night";
    delivery.outcome = Outcome::Answered;
    delivery.server = "http://pager1:8080";
    delivery.httpStatus = 200;
    delivery.duration = milliseconds(12);
    delivery.replySize = 32;
    delivery.client = "10.0.0.5";
    delivery.reply = "OK job 100001.1 queued for night";
    return delivery;
}

class DeliveryEntryTest : public testing::Test {
protected:
    void SetUp() override { SetZone("<+0530>-5:30"); }
    void TearDown() override { SetZone(nullptr); }
    static void SetZone(const char* zone) {
        if (zone == nullptr) {
            unsetenv("TZ");
        } else {
            setenv("TZ", zone, 1);
        }
        tzset();
    }
};

}  // namespace

TEST_F(DeliveryEntryTest, TellsAnAnsweredRequestInOneLine) {
    EXPECT_EQ(
        DeliveryEntry(Answered()),
        "at=2026-11-21T20:35:00.123+05:30 id=7f3a9c21 method=SendStdMessage to=night "
        "server=http://pager1:8080 via=primary outcome=answered http=200 ms=12 bytes=32 client=10.0.0.5 "
        "reply=\"OK job 100001.1 queued for night\"");
    SetZone("<-0330>3:30");
    EXPECT_TRUE(DeliveryEntry(Answered()).starts_with("at=2026-11-21T11:35:00.123-03:30 ")) << "west of UTC";
    SetZone("UTC0");
    EXPECT_TRUE(DeliveryEntry(Answered()).starts_with("at=2026-11-21T15:05:00.123+00:00 "));
}

TEST_F(DeliveryEntryTest, KeepsEveryValueOnOneLineOfValidText) {
    const struct {
        std::string text, value;
    } cases[] = {
        {"night", "night"},
        {"", "\"\""},
        {"O'Brien", "\"O'Brien\""},
        {"a=b", "\"a=b\""},
        {"say \"hi\" \\", "\"say \\\"hi\\\" \\\\\""},
        {"one\r\ntwo\tthree", "\"one\\r\\ntwo\\tthree\""},
        {std::string("nul\0esc\x1B[31m\x7F", 13), "\"nul\\x00esc\\x1b[31m\\x7f\""},
        {"M\xC3\xBCller", "\"M\xC3\xBCller\""},
        {"bad \xFF\xC3", "\"bad \\xff\\xc3\""},
        {"c1 \xC2\x9B", "\"c1 \\xc2\\x9b\""},  // a terminal takes it for ESC [
        // The first and the last that are not shown, with those that stand beside them.
        {"\xC2\x80\xC2\x9F\xC2\xA0", "\"\\xc2\\x80\\xc2\\x9f\xC2\xA0\""},
        {"\xE2\x80\x8A\xE2\x80\x8B", "\"\xE2\x80\x8A\\xe2\\x80\\x8b\""},
        {"\xE2\x80\x8F\xE2\x80\x90", "\"\\xe2\\x80\\x8f\xE2\x80\x90\""},
        {"\xE2\x80\xA7\xE2\x80\xA8", "\"\xE2\x80\xA7\\xe2\\x80\\xa8\""},
        {"\xE2\x80\xAE\xE2\x80\xAF", "\"\\xe2\\x80\\xae\xE2\x80\xAF\""},
        {"\xE2\x81\xA6\xE2\x81\xA9\xE2\x81\xAA", "\"\\xe2\\x81\\xa6\\xe2\\x81\\xa9\xE2\x81\xAA\""},
        {"turn \xE2\x80\xAE line \xE2\x80\xA8", "\"turn \\xe2\\x80\\xae line \\xe2\\x80\\xa8\""},
    };
    for (const auto& c : cases) EXPECT_EQ(LogfmtValue(c.text), c.value);
}

TEST_F(DeliveryEntryTest, TellsOnlyTheBeginningOfTheReply) {
    Delivery delivery = Answered();
    delivery.reply = std::string(199, 'a') + "\xC3\xBC" + std::string(1000, 'b');
    EXPECT_TRUE(DeliveryEntry(delivery).ends_with("reply=\"" + std::string(199, 'a') + "\\xc3\""));
}

// The system cases hold the levels of the other outcomes.
TEST_F(DeliveryEntryTest, RaisesTheLevelForAServersErrorPage) {
    Delivery delivery = Answered();
    delivery.httpStatus = 399;
    EXPECT_EQ(LevelOf(delivery), LogLevel::Info);
    delivery.httpStatus = 400;
    EXPECT_EQ(LevelOf(delivery), LogLevel::Warn);
}

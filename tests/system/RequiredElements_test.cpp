// The service description tells clients which elements they must send. Toolkits refuse a call without one of
// them before it leaves the client, so no more may be required than the program itself refuses to do without.

#include <gtest/gtest.h>

#include "tests/support/LoopbackServer.h"
#include "tests/system/FrontEnd.h"
#include "tools/wsdl/RequestElements.h"

using namespace quorbel;

namespace {

std::string Element(const std::string& name, const std::string& content) {
    return std::string("<").append(name).append(">").append(content).append("</").append(name).append(">");
}

class RequiredElementsTest : public testing::TestWithParam<Method> {
protected:
    /// The fault string, or nothing, of a request with the required elements less `omitted`.
    std::string FaultWithout(std::string_view omitted) const {
        std::string fields;
        for (const std::string& element : Required()) {
            const std::string value = element == "szURL" ? server_.Url() : "x";
            if (element != omitted) fields += Element(element, value);
        }
        const std::string body = Element("Body", Element(std::string(GetParam().name), fields));
        const std::string answer = BodyOf(frontEnd_.Serve(Element("Envelope", body)));
        const std::size_t start = answer.find("<faultstring>");
        if (start == answer.npos) return {};
        return answer.substr(start + 13, answer.find("</faultstring>") - start - 13);
    }

    std::vector<std::string> Required() const {
        std::vector<std::string> names;
        for (const Field& rule : RequestElementsOf(GetParam())) {
            if (IsRequired(GetParam(), rule)) names.emplace_back(rule.element);
        }
        return names;
    }

private:
    LoopbackServer server_;
    FrontEnd frontEnd_;
};

std::string NameOfMethod(const testing::TestParamInfo<Method>& info) {
    return std::string(info.param.name);
}

}  // namespace

TEST_P(RequiredElementsTest, AreThoseTheProgramRefusesToDoWithout) {
    EXPECT_EQ(FaultWithout(""), "") << "something else is required, too";
    for (const std::string& element : Required()) EXPECT_NE(FaultWithout(element), "") << element;
}

INSTANTIATE_TEST_SUITE_P(System, RequiredElementsTest, testing::ValuesIn(Methods().begin(), Methods().end()),
                         NameOfMethod);

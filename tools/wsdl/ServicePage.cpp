#include "tools/wsdl/ServicePage.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "soap/Envelopes.h"
#include "tools/wsdl/MethodForm.h"
#include "tools/wsdl/Notes.h"
#include "tools/wsdl/PageTexts.h"
#include "tools/wsdl/RequestElements.h"
#include "tools/wsdl/ServiceDescription.h"

namespace quorbel {

namespace {

using Text = std::string;

struct MethodGroup {
    std::string_view title;
    int firstCode;
    int lastCode;
};
constexpr MethodGroup kGroups[] = {
    {"Messages", 150, 155},    {"Groups", 132, 134}, {"Members of groups", 128, 131}, {"Receivers", 135, 137},
    {"Departments", 138, 140}, {"Users", 141, 144},  {"User groups", 145, 149},
};

constexpr bool EveryMethodInOneGroup() {
    for (int code = kFirstMethodCode; code <= kLastMethodCode; ++code) {
        const auto holdsCode = [code](const MethodGroup& group) {
            return code >= group.firstCode && code <= group.lastCode;
        };
        if (std::count_if(std::begin(kGroups), std::end(kGroups), holdsCode) != 1) return false;
    }
    return true;
}
static_assert(EveryMethodInOneGroup());

std::vector<const Method*> MethodsOf(const MethodGroup& group) {
    std::vector<const Method*> methods;
    for (const Method& method : Methods()) {
        if (method.code >= group.firstCode && method.code <= group.lastCode) methods.push_back(&method);
    }
    return methods;
}

Text Cell(std::string_view content) {
    return "<td>" + Text(content) + "</td>";
}

Text Row(const Method& method, const Field& rule, std::string_view insideOf) {
    const Text element = (insideOf.empty() ? "" : Text(insideOf) + " / ") + Text(rule.element);
    const Text type =
        IsItem(rule) ? "list of at most " + std::to_string(MaxOccurs(rule)) : Text(TypeOf(rule).substr(3));
    const Text note = EscapeXml(NoteOf(rule)) + (IsItem(rule) ? "" : " " + EscapeXml(LimitOf(method, rule)));
    return "<tr><th scope=\"row\"><code>" + element + "</code></th>" + Cell(type) +
           Cell(IsRequired(method, rule) ? "<span class=\"required\">required</span>" : "optional") +
           Cell(note) + "</tr>\n";
}

Text Rows(const Method& method) {
    Text rows;
    for (const Field& rule : RequestElementsOf(method)) {
        rows += Row(method, rule, {});
        if (!IsItem(rule)) continue;
        for (const Field& member : MembersOf(rule, method.fields)) {
            rows += Row(method, member, rule.element);
        }
    }
    return rows;
}

Text SampleAnswer(const Method& method) {
    const bool isQuery = method.name.find("Query") != method.name.npos;
    Text document;
    MakeResponse([&document](std::string_view piece) { document += piece; }, method.name,
                 isQuery ? "OK\r\nfirst line of the list\r\nsecond line\r\n" : "OK\n");
    return document;
}

Text Answers(const Method& method) {
    return "<h4>Answer</h4>\n<pre>" + EscapeXml(SampleAnswer(method)) +
           "</pre>\n<p class=\"quiet\">The words are the paging server's own. Or a <a href=\"#faults\">fault</a>" +
           (IsMessagingMethod(method.name) ? ", or the <a href=\"#failures\">words of a failure</a>." : ".") +
           "</p>\n";
}

/// What the filter box looks at.
Text WordsOf(const Method& method) {
    Text words = Text(method.name) + " " + EscapeXml(NoteOf(method));
    for (const Field& rule : RequestElementsOf(method)) words += " " + Text(rule.element);
    return words;
}

Text Article(const Method& method, PageForms forms) {
    const Text name(method.name);
    return "<article id=\"" + name + "\" data-words=\"" + WordsOf(method) + "\">\n<h3><a href=\"#" + name +
           "\">" + name + "</a></h3>\n<p>" + EscapeXml(NoteOf(method)) +
           "</p>\n<div class=\"scroll\"><table class=\"stack\"><caption class=\"quiet\">Elements, in the order in which to "
           "send them</caption>\n<thead><tr><th scope=\"col\">Element</th><th scope=\"col\">Type</th><th "
           "scope=\"col\">Needed</th><th scope=\"col\">Notes</th></tr></thead>\n<tbody>\n" +
           Rows(method) + "</tbody></table></div>\n<h4>Sample request</h4>\n<pre class=\"sample\">" +
           EscapeXml(SampleRequest(method)) + "</pre>\n" + Answers(method) +
           (forms == PageForms::With ? MethodForm(method) : Text()) + "</article>\n";
}

Text Navigation() {
    Text text = "<nav aria-label=\"Methods\">\n";
    for (const MethodGroup& group : kGroups) {
        text += "<h2>" + Text(group.title) + "</h2>\n<ul>";
        for (const Method* method : MethodsOf(group)) {
            text += "<li><a href=\"#" + Text(method->name) + "\">" + Text(method->name) + "</a></li>";
        }
        text += "</ul>\n";
    }
    return text + "</nav>\n";
}

Text FilterBox() {
    return "<p class=\"with-script filter\" hidden><label for=\"filter\">Show only methods with these words in their name, "
           "notes or elements</label><input id=\"filter\" type=\"search\"> <span id=\"found\" role=\"status\"></span></p>\n";
}

Text Catalogue(PageForms forms) {
    Text text;
    for (const MethodGroup& group : kGroups) {
        text += "<h2>" + Text(group.title) + "</h2>\n";
        for (const Method* method : MethodsOf(group)) text += Article(*method, forms);
    }
    return text;
}

Text TextTable(std::string_view id, std::string_view title, std::string_view note,
               std::span<const TextMeaning> rows) {
    Text text =
        "<h2 id=\"" + Text(id) + "\">" + Text(title) + "</h2>\n<p>" + Text(note) +
        "</p>\n<div class=\"scroll\"><table class=\"stack\"><thead><tr><th scope=\"col\">Text</th><th "
        "scope=\"col\">What it means</th></tr></thead>\n<tbody data-texts=\"" +
        Text(id) + "\">\n";
    for (const TextMeaning& row : rows) {
        text += Text("<tr data-sent=\"") + (row.sent == Sent::No ? "no" : "perhaps") +
                "\"><th scope=\"row\">" + EscapeXml(row.text) + "</th>" + Cell(EscapeXml(row.meaning)) +
                "</tr>\n";
    }
    return text + "</tbody></table></div>\n";
}

Text Head(PageForms forms) {
    const bool withForms = forms == PageForms::With;
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n<title>Quorbel SOAP "
           "service</title>\n<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<meta "
           "name=\"referrer\" content=\"no-referrer\">\n<link rel=\"icon\" href=\"data:,\">\n<style>" +
           Text(PageStyle()) + "</style>\n</head>\n<body data-endpoint=\"" + kEndpointPlaceholder +
           "\" data-namespace=\"" + (withForms ? EscapeXml(kServiceNamespace) : "") +
           "\">\n<a class=\"skip\" href=\"#methods\">To the methods</a>\n<header>\n<h1>Quorbel SOAP service</h1>\n"
           "<p>Pages people and administers the paging server's directory. Hand <a "
           "href=\"/quorbel.wsdl\">quorbel.wsdl</a>, the service's description, to your SOAP toolkit. The service's "
           "address is <code>" +
           kEndpointPlaceholder + "</code>; it speaks SOAP 1.1 over HTTP POST.</p>\n<p>" +
           EscapeXml(ServiceNote()) +
           " Guides for eight toolkits, every fault and its cure stand in <code>share/docs</code> of the installation: "
           "<code>clients.md</code> and <code>faults.md</code>.</p>\n";
}

}  // namespace

std::string ServicePage(PageForms forms) {
    const bool withForms = forms == PageForms::With;
    return Head(forms) + (withForms ? FilterBox() : Text()) + Navigation() +
           "</header>\n<main id=\"methods\">\n" + Catalogue(forms) +
           TextTable(
               "faults", "Faults",
               "The text stands in <code>faultstring</code>; the HTTP status is 200. Nothing was sent, but for 2012.",
               FaultMeanings()) +
           TextTable(
               "failures", "Failures that look like answers",
               "A message that could not be delivered is answered by a response that ends with one of these texts. With "
               "szURL2 they are those of the second attempt, and the first one may have sent it: query before you send "
               "it again.",
               FailureMeanings()) +
           "</main>\n<footer class=\"quiet\"><p>Made with the service from its own tables.</p></footer>\n" +
           (withForms ? "<script>" + Text(PageScript()) + "</script>\n" : Text()) + "</body>\n</html>\n";
}

}  // namespace quorbel

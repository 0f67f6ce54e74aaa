#include "tools/wsdl/MethodForm.h"

#include "process/Translation.h"
#include "soap/Envelopes.h"
#include "tools/wsdl/Notes.h"
#include "tools/wsdl/RequestElements.h"

namespace quorbel {

namespace {

constexpr std::size_t kOfferedItems = 2;  ///< how many of a repeated item the form offers

using Text = std::string;

bool IsPassword(const Field& rule) {
    return rule.element.ends_with("Password") || rule.element.ends_with("Pwd") ||
           rule.element == "szSecurityCode" || rule.element == "szAccesCode";
}

Text Attributes(const Text& id, const Field& rule, bool isRequired) {
    return " id=\"" + id + "\" data-element=\"" + Text(rule.element) + "\"" +
           (rule.onData == OnData::Append ? " data-whole=\"yes\"" : "") + (isRequired ? " required" : "");
}

Text BooleanInput(const Text& attributes, const Field& rule) {
    return "<select" + attributes + "><option value=\"\">leave out</option><option>true</option>" +
           (IsSticky(rule) ? "" : "<option>false</option>") + "</select>";
}

Text InputFor(const Text& id, const Field& rule, bool isRequired) {
    const Text attributes = Attributes(id, rule, isRequired);
    if (TypeOf(rule) == "xs:boolean") return BooleanInput(attributes, rule);
    if (rule.onData == OnData::Append) return "<textarea rows=\"3\"" + attributes + "></textarea>";
    if (IsPassword(rule)) return "<input type=\"password\" autocomplete=\"off\"" + attributes + ">";
    if (TypeOf(rule) == "xs:int") return "<input type=\"number\" step=\"1\"" + attributes + ">";
    if (rule.element.starts_with("szURL")) {
        return "<input type=\"url\" placeholder=\"http://pager.example/cgi/cmd\" autocomplete=\"off\"" +
               attributes + ">";
    }
    return "<input type=\"text\" autocomplete=\"off\"" + attributes + ">";
}

Text Labelled(const Text& id, const Field& rule, bool isRequired) {
    return Text("<div") + (rule.onData == OnData::Append ? " class=\"wide\"" : "") + "><label for=\"" + id +
           "\">" + Text(rule.element) + (isRequired ? " <span class=\"required\">(required)</span>" : "") +
           "</label>" + InputFor(id, rule, isRequired) + "<span class=\"warning\"></span></div>\n";
}

/// The members of a repeated item. None of them is required: an item without any is left out.
Text ItemInputs(const Method& method, const Field& item) {
    Text text;
    for (std::size_t i = 1; i <= kOfferedItems; ++i) {
        text += "<fieldset class=\"wide\" data-item data-element=\"" + Text(item.element) + "\"><legend>" +
                Text(item.element) + " " + std::to_string(i) + "</legend><div class=\"fields\">\n";
        for (const Field& member : MembersOf(item, method.fields)) {
            text +=
                Labelled(Text(method.name) + "-" + Text(member.element) + std::to_string(i), member, false);
        }
        text += "</div></fieldset>\n";
    }
    return text;
}

Text Inputs(const Method& method) {
    Text text;
    for (const Field& rule : RequestElementsOf(method)) {
        text += IsItem(rule)
                    ? ItemInputs(method, rule)
                    : Labelled(Text(method.name) + "-" + Text(rule.element), rule, IsRequired(method, rule));
    }
    return text;
}

}  // namespace

std::string LimitOf(const Method& method, const Field& rule) {
    if (rule.kind != FieldKind::Text || TypeOf(rule) == "xs:boolean") return {};
    const auto width = WidthOf(method, rule.slot);
    return width ? "Cut at " + std::to_string(*width) + " bytes." : std::string();
}

std::string MethodForm(const Method& method) {
    const Text name(method.name);
    return "<details class=\"with-script\" hidden><summary>Try it</summary>\n<form data-method=\"" + name +
           "\" autocomplete=\"off\">\n<p class=\"quiet\">This is sent to the service for real.</p>\n<div class=\"fields\">\n" +
           Inputs(method) + "</div>\n<label for=\"" + name +
           "-envelope\">The envelope that is sent (passwords are not shown)</label>\n<textarea class=\"envelope\" id=\"" +
           name +
           "-envelope\" rows=\"5\" readonly></textarea>\n<p>The same with curl:</p>\n<pre class=\"curl\"></pre>\n<button "
           "class=\"send\" type=\"submit\">Send " +
           name +
           "</button>\n<div class=\"result\" role=\"status\" hidden><p class=\"outcome\"><strong></strong><span></span></p><p "
           "class=\"status quiet\"></p><pre class=\"answer\"></pre></div>\n</form></details>\n";
}

}  // namespace quorbel

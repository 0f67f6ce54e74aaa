#include "tests/support/XmlTree.h"

#include <expat.h>
#include <gtest/gtest.h>

namespace quorbel {

namespace {

/// The elements that are open, outermost first.
using Path = std::vector<XmlNode>;

void OnStart(void* path, const char* name, const char** attributes) noexcept {
    XmlNode node = {.name = name};
    for (; *attributes; attributes += 2) node.attributes[attributes[0]] = attributes[1];
    static_cast<Path*>(path)->push_back(std::move(node));
}

void OnEnd(void* path, const char*) noexcept {
    Path& open = *static_cast<Path*>(path);
    XmlNode node = std::move(open.back());
    open.pop_back();
    open.back().children.push_back(std::move(node));
}

void OnText(void* path, const char* text, int size) noexcept {
    static_cast<Path*>(path)->back().text.append(text, static_cast<std::size_t>(size));
}

}  // namespace

std::string XmlNode::Attribute(const std::string& attribute) const {
    const auto found = attributes.find(attribute);
    return found == attributes.end() ? "" : found->second;
}

std::vector<const XmlNode*> XmlNode::Children(std::string_view child) const {
    std::vector<const XmlNode*> found;
    for (const XmlNode& node : children) {
        if (node.name == child) found.push_back(&node);
    }
    return found;
}

const XmlNode& XmlNode::Child(std::string_view child) const {
    static const XmlNode kNone;
    const auto found = Children(child);
    if (found.empty()) ADD_FAILURE() << "no " << child << " in " << name;
    return found.empty() ? kNone : *found.front();
}

std::vector<const XmlNode*> XmlNode::All() const {
    std::vector<const XmlNode*> all = {this};
    for (const XmlNode& node : children) {
        const auto below = node.All();
        all.insert(all.end(), below.begin(), below.end());
    }
    return all;
}

XmlNode ParseXml(const std::string& document) {
    Path open(1);
    const XML_Parser parser = XML_ParserCreateNS(nullptr, '|');
    XML_SetUserData(parser, &open);
    XML_SetElementHandler(parser, OnStart, OnEnd);
    XML_SetCharacterDataHandler(parser, OnText);
    const XML_Status status = XML_Parse(parser, document.data(), static_cast<int>(document.size()), XML_TRUE);
    EXPECT_EQ(status, XML_STATUS_OK) << XML_ErrorString(XML_GetErrorCode(parser)) << " in line "
                                     << XML_GetCurrentLineNumber(parser);
    XML_ParserFree(parser);
    return open[0].children.empty() ? XmlNode{} : open[0].children[0];
}

}  // namespace quorbel

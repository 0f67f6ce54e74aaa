#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace quorbel {

/// One element of a parsed document. Names are "namespace|local"; those without a namespace are plain.
struct XmlNode {
    std::string name = {};
    std::map<std::string, std::string> attributes = {};
    std::vector<XmlNode> children = {};
    std::string text = {};  ///< all character data directly inside

    std::string Attribute(const std::string& attribute) const;
    /// The first child of that name; fails the test and returns an empty node when there is none.
    const XmlNode& Child(std::string_view child) const;
    std::vector<const XmlNode*> Children(std::string_view child) const;
    /// Itself and everything below it.
    std::vector<const XmlNode*> All() const;
};

/// Parses a whole document; fails the test when it is not well-formed.
XmlNode ParseXml(const std::string& document);

}  // namespace quorbel

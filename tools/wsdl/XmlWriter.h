#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace quorbel {

/// A growing XML document, indented by two blanks a level. Texts and attribute values are escaped here.
///
/// Elements are written by XmlElement, whose scope is the element's.
class XmlWriter {
public:
    struct Attribute {
        std::string_view name;
        std::string_view value;
    };
    using Attributes = std::initializer_list<Attribute>;

    XmlWriter();

    /// An element that holds only a text.
    void Text(std::string_view element, std::string_view text);
    /// An element that holds nothing.
    void Empty(std::string_view element, Attributes attributes);

    const std::string& Document() const { return document_; }

private:
    friend class XmlElement;
    void Indent();
    void Begin(std::string_view element, Attributes attributes, std::string_view end);

    std::string document_;
    std::size_t depth_ = 0;
};

/// One element that holds others: opened here, closed at the end of the scope. `name` must live as long.
class XmlElement {
public:
    XmlElement(XmlWriter& writer, std::string_view name, XmlWriter::Attributes attributes = {});
    ~XmlElement();

    XmlElement(const XmlElement&) = delete;
    XmlElement& operator=(const XmlElement&) = delete;

private:
    XmlWriter& writer_;
    std::string_view name_;
};

}  // namespace quorbel

#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quorbel {

/// The fields of one entry of the delivery journal: `key=value` with blanks between, values that are not
/// plain in double quotes with backslash escapes. docs/delivery-journal.md tells the keys.
class Logfmt {
public:
    using Field = std::pair<std::string, std::string>;

    /// Never fails: what is no field is passed over, a quote without its end ends with the text.
    explicit Logfmt(std::string_view text);

    const std::vector<Field>& Fields() const { return fields_; }
    /// The first value of that key; empty when there is none.
    const std::string& Value(std::string_view key) const;

private:
    std::vector<Field> fields_;
};

}  // namespace quorbel

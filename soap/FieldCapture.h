#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <memory>

#include "soap/Methods.h"
#include "soap/RequestRecord.h"

namespace quorbel {

/// Whether an element's attributes say that it is nil.
enum class Nil {
    No,
    WithoutText,  ///< an attribute in front of the last says so: absent unless a text follows
    Always,       ///< the last attribute says so: absent whatever follows
};

/// Moves the text of elements into a request record: which fields are being captured, and what the start, the
/// text and the end of an element do to them. One object serves one envelope; flags that a method leaves set
/// are still set when a second method of the same envelope starts.
///
/// A piece of text is kept once and handed to a field when the field's capture ends, so that it costs the same
/// however many fields are open. Operations throw std::bad_alloc.
class FieldCapture {
public:
    /// `record` must outlive this object.
    explicit FieldCapture(RequestRecord& record) : record_(record) {}

    /// The method's fields, and the common ones, are looked at until Close.
    void Open(const Method& method);
    void Start(const TagName& element, Nil nil);
    void Data(std::string_view text);
    void End(const TagName& element);
    /// Ends the method, or the document in its middle: every field that is still captured gets its text.
    void Close();

private:
    /// How many pieces of text came so far, and how many of them were more than white space.
    struct Count {
        std::uint64_t pieces = 0;
        std::uint64_t printed = 0;
    };

    /// Fields with their capture flags, and the count of the pieces that each field has already.
    struct Group {
        std::span<const Field> fields = {};
        std::size_t whole = kMaxFields;  ///< the field that is kept whole, if there is one
        std::bitset<kMaxFields + 1> captured = {};
        std::array<Count, kMaxFields> taken{};
    };

    /// A list of items and whether one is open.
    struct OpenItems {
        RequestItems& list;
        bool isOpen = false;
    };

    void Capture(Group& group, std::size_t field);
    void Stop(Group& group, std::size_t field);
    void HandOver(Group& group, std::size_t field);
    void BeginField(const Field& field, Nil nil);
    void EndField(Group& group, std::size_t field);
    void BeginItem(OpenItems& items);
    void EndItem(OpenItems& items);
    void AppendWhole(std::string_view text);
    void KeepPiece(std::string_view text);
    bool IsCut(const Count& taken) const;
    OpenItems& ItemsOf(const Field& field);
    bool IsPartOf(const Field& field, const OpenItems& items);

    RequestRecord& record_;
    OpenItems responseActions_{record_.responseActions};
    OpenItems customFields_{record_.customFields};
    Group common_{.fields = CommonFields()};
    std::array<std::unique_ptr<Group>, kMethodCount> groups_;  ///< made when such a method starts
    Group* own_ = nullptr;
    SharedText piece_;
    Count count_;
    bool isPiecePrinted_ = false;
};

}  // namespace quorbel

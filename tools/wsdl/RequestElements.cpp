#include "tools/wsdl/RequestElements.h"

#include <algorithm>

#include "process/CommandRecords.h"

namespace quorbel {

namespace {

/// Where an element stands in its request.
enum class Place { Head, Own, Sticky, ClosesMethod, SecondUrl };

Place PlaceOf(const Field& field, bool isCommon) {
    if (isCommon) return field.slot == Slot::Url2 ? Place::SecondUrl : Place::Head;
    if (IsSticky(field)) return Place::Sticky;
    // Its end tag ends the method for the parser, whatever element the name belongs to.
    if (MethodClosedBy(TagName(field.element)) != nullptr) return Place::ClosesMethod;
    return Place::Own;
}

struct Placed {
    Place place;
    Field field;
};

void Append(std::vector<Placed>& elements, std::span<const Field> fields, bool isCommon) {
    for (const Field& field : fields) {
        if (!IsPart(field)) elements.push_back({PlaceOf(field, isCommon), field});
    }
}

}  // namespace

std::vector<Field> RequestElementsOf(const Method& method) {
    std::vector<Placed> elements;
    Append(elements, CommonFields(), true);
    Append(elements, method.fields, false);
    std::stable_sort(elements.begin(), elements.end(),
                     [](const Placed& left, const Placed& right) { return left.place < right.place; });

    const bool endsSticky = std::any_of(elements.begin(), elements.end(),
                                        [](const Placed& e) { return e.place == Place::Sticky; });
    std::vector<Field> fields;
    for (const Placed& e : elements) {
        // Behind a sticky element szURL2 would go into that one, too.
        if (e.place != Place::SecondUrl || !endsSticky) fields.push_back(e.field);
    }
    return fields;
}

std::vector<Field> MembersOf(const Field& item, std::span<const Field> fields) {
    const FieldKind part =
        item.kind == FieldKind::ResponseAction ? FieldKind::ResponseActionPart : FieldKind::CustomFieldPart;
    std::vector<Field> members;
    std::copy_if(fields.begin(), fields.end(), std::back_inserter(members),
                 [part](const Field& field) { return field.kind == part; });
    return members;
}

bool IsSticky(const Field& field) {
    return field.onEnd == OnEnd::KeepCapturing;
}

std::size_t MaxOccurs(const Field& field) {
    if (field.kind == FieldKind::ResponseAction) return kResponseActionSlots;
    if (field.kind == FieldKind::CustomField) return kCustomFieldSlots;
    return 1;
}

std::string_view TypeOf(const Field& field) {
    if (field.element.starts_with('b')) return "xs:boolean";
    // Time zones are the paging server's own identifiers, whatever the name says.
    if (field.element.starts_with('n') && field.element != "nTimeZone") return "xs:int";
    return "xs:string";
}

}  // namespace quorbel

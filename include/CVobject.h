#pragma once

/// Common base of the platform classes: gives each a virtual destructor and nothing else.
class CVobject {
public:
    virtual ~CVobject() = default;

protected:
    CVobject() = default;
    CVobject(const CVobject&) = default;
    CVobject& operator=(const CVobject&) = default;
};

#pragma once

#include "CVioFile.h"
#include "syslib/IniReaderWriter.h"

/// An INI file that is held open between reading and rewriting it.
///
/// Loading and saving work on the open file and answer false while it is closed. Saving to another path
/// leaves the open file alone.
class CVIniReaderWriterEx : public IniReaderWriter {
public:
    using IniReaderWriter::IniReaderWriter;

    bool load() override;
    bool save(const std::string& otherPath = {}) override;

    /// Opens the existing file for reading and writing; false when it cannot be or is open already.
    bool Open();
    /// The same, but creates the file, or empties it.
    bool Create();
    void Close() noexcept { file_.Close(); }

private:
    CVioFile file_{Path()};
};

#pragma once

#include "CVioFile.h"
#include "syslib/IniReaderWriter.h"

/// An INI file that is held open between reading and rewriting it.
///
/// Loading and saving work on the open file and answer false while it is closed. A save that fails, on a full
/// disk say, leaves the old content. Saving to another path leaves the open file alone.
class CVIniReaderWriterEx : public IniReaderWriter {
public:
    using IniReaderWriter::IniReaderWriter;

    bool load() override;
    bool save(const std::string& otherPath = {}) override;

    /// Opens the existing file for reading and writing; false when it cannot be or is open already.
    bool Open();
    /// The same, but creates the file, or empties it.
    bool Create();
    /// The same, and neither empties nor needs an existing file.
    bool CreateAndOpen();
    void Close() noexcept { file_.Close(); }

    /// Keeps readers and writers out of the open file until Close, over any number of loads and saves of an
    /// object that takes no lock by itself. False, see LockIsBusy, when another program holds the lock.
    bool LockUntilClose();

private:
    CVioFile file_{Path()};
};

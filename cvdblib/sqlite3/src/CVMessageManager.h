#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "cvdblib/sqlite3/src/CVSQLite3Database.h"
#include "cvdblib/sqlite3/src/MessageConstants.h"

class CVioFile;

/// The message catalogue: texts by number and language, in the file "messages.sdb".
///
/// One per process, for one thread at a time, created when first needed on the path that is in force then.
class CVMessageManager {
public:
    /// The catalogue's path: in `directory`, or in the fixed configuration directory when that is empty. The
    /// first call decides for the whole run, whatever directory later ones name.
    static std::string GetDBFilePath(const std::string& directory = {});
    /// Decides for `directory` if a catalogue lies there and nothing was decided before.
    static void PreferDirectory(const std::string& directory);

    /// Closes the catalogue, if it is open, and forgets where it lies: the next call decides anew.
    static void Release();

    /// Creates the database and its table when they are missing. Throws CVDBexception, and std::exception
    /// when the database does not become ready.
    static CVMessageManager& GetInstance(const std::string& directory = {});

    /// Replaces the catalogue by the messages of a constants file, or leaves it as it was: when it throws
    /// (std::logic_error, CVDBexception, CVioException), answers false, or dies. May wait minutes for other
    /// users of the database.
    static bool LoadMessageConstants(const std::string& path);

    /// Empty for an unknown message, a missing catalogue and any failure; never throws and never creates a
    /// file.
    static std::string GetMessage(std::int32_t id);

    /// Every message of the selected language by number; none without a catalogue. Throws CVDBexception.
    static std::vector<quorbel::MessageConstant> GetMessages();

private:
    explicit CVMessageManager(const std::string& path);

    void Replace(CVioFile& constants);
    void Insert(const quorbel::MessageConstant& message);
    std::string LookUp(std::int32_t id);

    static std::unique_ptr<CVMessageManager> m_pMsgManager;
    static std::string m_strDBFilePath;
    static const quorbel::TableDescription m_tableDesc;
    static std::uint32_t m_ulSelectedLanguageID;

    CVSQLite3Database database_;
};

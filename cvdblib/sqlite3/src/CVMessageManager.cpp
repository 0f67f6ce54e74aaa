#include "cvdblib/sqlite3/src/CVMessageManager.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include "CVioFile.h"
#include "cvdblib/sqlite3/src/CVDBexception.h"
#include "cvdblib/sqlite3/src/CVSQLite3ResultSet.h"

using namespace quorbel;

namespace {

constexpr const char* kFixedDirectory = "/usr/local/corvane/config";
constexpr const char* kFileName = "messages.sdb";
constexpr int kCannotOpen = 14;  // SQLite's code

std::string PathIn(const std::string& directory) {
    return directory + (directory.ends_with('/') ? "" : "/") + kFileName;
}

bool Exists(const std::string& path) {
    std::error_code failure;
    return std::filesystem::exists(path, failure);
}

/// A file held open under a read lock.
class LockedForReading {
public:
    explicit LockedForReading(const std::string& path) : file_(path) {
        file_.Open("r");
        try {
            file_.Lock('r', true);
        } catch (...) {
            file_.Unlock();  // a refused lock has taken the one between threads
            throw;
        }
    }
    ~LockedForReading() {
        file_.Unlock();
        file_.Close();
    }
    LockedForReading(const LockedForReading&) = delete;
    LockedForReading& operator=(const LockedForReading&) = delete;

    CVioFile& File() { return file_; }

private:
    CVioFile file_;
};

}  // namespace

std::unique_ptr<CVMessageManager> CVMessageManager::m_pMsgManager;
std::string CVMessageManager::m_strDBFilePath;
const TableDescription CVMessageManager::m_tableDesc{
    "messages", "msg_id INTEGER PRIMARY KEY, language_id INTEGER, message VARCHAR(1024)"};
std::uint32_t CVMessageManager::m_ulSelectedLanguageID = 1;

std::string CVMessageManager::GetDBFilePath(const std::string& directory) {
    if (m_strDBFilePath.empty()) m_strDBFilePath = PathIn(directory.empty() ? kFixedDirectory : directory);
    return m_strDBFilePath;
}

void CVMessageManager::PreferDirectory(const std::string& directory) {
    if (!directory.empty() && Exists(PathIn(directory))) GetDBFilePath(directory);
}

void CVMessageManager::Release() {
    m_pMsgManager.reset();
    m_strDBFilePath.clear();
}

CVMessageManager::CVMessageManager(const std::string& path) : database_(path, m_tableDesc) {
    if (!database_.IsReady()) throw std::exception();
}

CVMessageManager& CVMessageManager::GetInstance(const std::string& directory) {
    if (m_pMsgManager != nullptr) return *m_pMsgManager;
    const std::string path = GetDBFilePath(directory);
    // The database would find out after 25 s, with the same outcome.
    if (!IsReadableDatabase(path) && !IsWritableDatabase(path)) {
        throw CVDBexception(kCannotOpen, "CVMessageManager", __LINE__, "Unable to open DB [" + path + "]",
                            "unable to open database file");
    }
    m_pMsgManager.reset(new CVMessageManager(path));
    return *m_pMsgManager;
}

bool CVMessageManager::LoadMessageConstants(const std::string& path) {
    if (path.empty()) throw std::logic_error("No message constants file specified.");
    if (!Exists(path)) {
        throw std::logic_error("No message constants file exist at the specified path: [" + path + "].");
    }
    CVMessageManager& manager = GetInstance();
    LockedForReading constants(path);
    return manager.database_.InTransaction(TransactionKind::Exclusive, kTryForMinutes, [&] {
        manager.Replace(constants.File());
        return true;
    });
}

void CVMessageManager::Replace(CVioFile& constants) {
    if (!database_.ExecuteUpdateQuery("DELETE FROM messages;")) {
        throw std::logic_error(
            "Could not flush existing messages from the database. Failed to execute DELETE query.");
    }
    for (std::string line; ReadWholeLine(constants, line);) {
        if (const auto message = ParseMessageConstant(line)) Insert(*message);
    }
}

void CVMessageManager::Insert(const MessageConstant& message) {
    CVSQLite3ResultSet result;
    std::int64_t rowId = 0;
    const std::string sql = "INSERT INTO messages (msg_id, language_id, message) VALUES (" +
                            std::to_string(message.id) + ", " + std::to_string(m_ulSelectedLanguageID) +
                            ", '" + CVSQLite3Database::DoubleQuotes(message.text) + "');";
    if (!database_.ExecuteUpdateQuery(sql, result, rowId)) {
        throw std::logic_error("Failed to execute INSERT query");
    }
    // A negative number ends here as well: the database reports such rows as 0.
    if (rowId != message.id) throw std::logic_error("Message ID returned from the database does not match");
}

std::string CVMessageManager::GetMessage(std::int32_t id) {
    try {
        if (!IsReadableDatabase(GetDBFilePath())) return {};
        return GetInstance().LookUp(id);
    } catch (const CVDBexception&) {
        return {};
    } catch (const std::exception&) {
        return {};
    }
}

std::string CVMessageManager::LookUp(std::int32_t id) {
    CVSQLite3ResultSet result;
    database_.ExecuteSelectQuery("SELECT message FROM messages WHERE msg_id=" + std::to_string(id) +
                                     " AND language_id=" + std::to_string(m_ulSelectedLanguageID) + ";",
                                 result);
    const char* text = result.GetCell(0, 0);
    return text != nullptr ? text : "";
}

std::vector<MessageConstant> CVMessageManager::GetMessages() {
    if (!Exists(GetDBFilePath())) return {};
    CVSQLite3ResultSet result;
    GetInstance().database_.ExecuteSelectQuery(
        "SELECT msg_id, message FROM messages WHERE language_id=" + std::to_string(m_ulSelectedLanguageID) +
            " ORDER BY msg_id;",
        result);
    std::vector<MessageConstant> messages;
    for (int row = 0; row < result.GetRowCount(); ++row) {
        const char* text = result.GetCell(row, 1);
        messages.push_back({std::atoi(result.GetCell(row, 0)), text != nullptr ? text : ""});
    }
    return messages;
}

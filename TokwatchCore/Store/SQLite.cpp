#include "SQLite.h"

#include "UsageStoreError.h"

#include <sqlite3.h>

namespace tokwatch::sqlite {
namespace {

std::string messageOf(sqlite3* connection, const char* withoutHandle) {
    return connection != nullptr ? sqlite3_errmsg(connection) : withoutHandle;
}

} // namespace

void Statement::Finalizer::operator()(sqlite3_stmt* statement) const {
    sqlite3_finalize(statement);
}

Statement::Statement(sqlite3* c, const char* sql) : connection(c) {
    sqlite3_stmt* prepared = nullptr;
    const int code =
        sqlite3_prepare_v3(connection, sql, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    handle.reset(prepared);
    if (code != SQLITE_OK || !handle) fail(code);
}

void Statement::fail(int code) const {
    throw UsageStoreError(code, messageOf(connection, "closed"));
}

Statement& Statement::bind(int index, const std::string& text) {
    const int code = sqlite3_bind_text(handle.get(), index, text.c_str(), -1, SQLITE_STATIC);
    if (code != SQLITE_OK) fail(code);
    return *this;
}

Statement& Statement::bind(int index, std::int64_t value) {
    const int code = sqlite3_bind_int64(handle.get(), index, value);
    if (code != SQLITE_OK) fail(code);
    return *this;
}

Statement& Statement::bind(int index, double value) {
    const int code = sqlite3_bind_double(handle.get(), index, value);
    if (code != SQLITE_OK) fail(code);
    return *this;
}

Statement& Statement::bindNull(int index) {
    const int code = sqlite3_bind_null(handle.get(), index);
    if (code != SQLITE_OK) fail(code);
    return *this;
}

bool Statement::step() {
    const int code = sqlite3_step(handle.get());
    if (code == SQLITE_ROW) return true;
    if (code == SQLITE_DONE) return false;
    // The message belongs to the failed step; resetting may replace it.
    const UsageStoreError error(code, messageOf(connection, "closed"));
    reset();
    throw error;
}

int Statement::run() {
    while (step()) {
    }
    const int changes = sqlite3_changes(connection);
    reset();
    return changes;
}

void Statement::reset() {
    // Its result repeats the failure that `step` has already reported.
    sqlite3_reset(handle.get());
}

bool Statement::isNull(int column) const {
    return sqlite3_column_type(handle.get(), column) == SQLITE_NULL;
}

std::int64_t Statement::integer(int column) const {
    return sqlite3_column_int64(handle.get(), column);
}

double Statement::real(int column) const {
    return sqlite3_column_double(handle.get(), column);
}

std::string Statement::text(int column) const {
    const unsigned char* text = sqlite3_column_text(handle.get(), column);
    if (text == nullptr) return {};
    const int length = sqlite3_column_bytes(handle.get(), column);
    return std::string(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length));
}

void Connection::Closer::operator()(sqlite3* connection) const {
    sqlite3_close(connection);
}

Connection::Connection(const std::string& file, std::chrono::milliseconds lockPatience) {
    sqlite3* opened = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX;
    const int code = sqlite3_open_v2(file.c_str(), &opened, flags, nullptr);
    handle.reset(opened);
    if (code != SQLITE_OK) throw UsageStoreError(code, messageOf(opened, "open failed"));
    if (!handle) throw UsageStoreError(SQLITE_OK, "open failed");
    sqlite3_busy_timeout(handle.get(), static_cast<int>(lockPatience.count()));
}

Connection::~Connection() {
    // Statements must go before their connection.
    statements.clear();
}

void Connection::execute(const char* script) {
    const int code = sqlite3_exec(handle.get(), script, nullptr, nullptr, nullptr);
    if (code != SQLITE_OK) throw UsageStoreError(code, messageOf(handle.get(), "closed"));
}

Statement& Connection::statement(const char* sql) {
    auto& kept = statements[sql];
    if (!kept) {
        try {
            kept = std::make_unique<Statement>(handle.get(), sql);
        } catch (...) {
            statements.erase(sql);
            throw;
        }
    }
    return *kept;
}

void Connection::releaseMemory() {
    sqlite3_db_release_memory(handle.get());
}

Transaction::Transaction(Connection& connection) : db(connection) {
    db.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    if (!open) return;
    try {
        db.execute("ROLLBACK");
    } catch (const UsageStoreError&) {
        // SQLite may have rolled back by itself (disk full); the first error is the one that
        // counts.
    }
}

void Transaction::commit() {
    db.execute("COMMIT");
    open = false;
}

} // namespace tokwatch::sqlite

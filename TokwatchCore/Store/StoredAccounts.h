#pragma once

#include "TokwatchCore/Store/UsageSummary.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tokwatch {

namespace sqlite {
class Connection;
}

/// Everything that the usage store has counted, as of one moment, for those who check it. Never
/// writes and makes no database. Operations throw UsageStoreError when SQLite fails.
class StoredAccounts {
  public:
    /// Of a database that exists.
    explicit StoredAccounts(const std::filesystem::path& database);
    ~StoredAccounts();

    /// The sums of each provider, model and day.
    std::vector<DailyRow> rows();
    /// All counted keys, and the days that they were counted on.
    void forEachKey(const std::function<void(std::string_view key, std::string_view day)>& visit);
    /// The read positions as `UsageStore::cursorTexts` has them.
    std::unordered_map<std::string, std::string> cursorTexts();

  private:
    std::unique_ptr<sqlite::Connection> db;
};

} // namespace tokwatch

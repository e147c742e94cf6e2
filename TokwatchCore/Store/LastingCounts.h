#pragma once

#include "TokwatchCore/Store/UsageSummary.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tokwatch {

/// What one model was used since counting began.
struct ModelCount {
    ProviderID provider = ProviderID::claude;
    std::string model;
    TokenCounts tokens;
    std::optional<double> costUSD; ///< absent where no day of it had a cost

    friend bool operator==(const ModelCount&, const ModelCount&) = default;
};

/// Sums over all days that never fall, as collectors want them: these take a smaller number for a
/// counter that began anew, and add all of it again.
///
/// The store forgets days, so the rows are kept in a database of their own,
///
///     days(provider, model, day, uncached, cache_read, w5m, w1h, output, reasoning, usd)
///
/// each number the largest that its day ever had. So the sums stay where the store prunes, where it
/// is removed and the logs are read again (in another time zone, what lies on another day then
/// counts again), and where a later price is lower. The first call makes the file; days that the
/// store had and lost between two calls, months apart then, are missed. Where the file is lost, the
/// sums begin anew with what the store has. The schema's version is 1; later versions are used as
/// they are.
///
/// In text order of providers and models. Throws UsageStoreError where the rows cannot be kept.
std::vector<ModelCount> lastingCounts(const std::filesystem::path& file,
                                      std::span<const DailyRow> rows, const PriceTable& prices);

/// The file of the counts beside this database.
std::filesystem::path countsBeside(const std::filesystem::path& database);

} // namespace tokwatch

#pragma once

#include "TokwatchCore/Support/Date.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>

/// What reads things that others wrote, fed with any bytes. A target fails by a signal, by what a
/// sanitizer finds, or by a `require` that does not hold.
namespace tokwatch::fuzzing {

struct Target {
    std::string_view name; ///< "tail": also that of its corpus
    void (*run)(std::string_view input);
};

/// In the order of their names.
std::span<const Target> targets();
/// Null where there is none of that name.
const Target* targetNamed(std::string_view name);

/// Where a source names its targets.
class Targets {
  public:
    Targets(std::initializer_list<Target> targets);
};

/// Says what does not hold, and aborts.
void require(bool holds, std::string_view what);

/// The present, whenever it is.
inline const Date now = dateFromUnixSeconds(1'768'000'000);

/// Values made of the input's bytes, zeros once these have run out.
class Choices {
  public:
    explicit Choices(std::string_view bytes) : left(bytes) {}

    bool areLeft() const { return !left.empty(); }
    std::uint8_t byte();
    std::uint16_t pair();
    std::int32_t integer();
    /// Any of them: infinite ones and what is no number, too.
    double number();
    /// Up to the next line feed, which is consumed.
    std::string_view line();
    std::string_view rest() const { return left; }

  private:
    void take(void* value, std::size_t size);

    std::string_view left;
};

/// A file of its own for this process, below a directory that goes with it.
std::filesystem::path scratchFile(std::string_view name);
void writeFile(const std::filesystem::path& file, std::string_view contents);

/// To be called once, before any target: makes the application object that an event loop needs, and
/// silences the log, as every other input is something to complain of.
void prepare();

} // namespace tokwatch::fuzzing

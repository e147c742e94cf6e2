#pragma once

#include <cstdint>
#include <string>

namespace tokwatch {

/// Sums and differences of token counts. A result beyond 64 bits stops the program: a wrapped sum
/// would be shown to the user as a plausible lie.
std::int64_t checkedAdd(std::int64_t a, std::int64_t b);
std::int64_t checkedSubtract(std::int64_t a, std::int64_t b);

/// Says what is being added up on this thread, for the message that stops the program: whoever
/// wrote an absurd count must be found. Nested ones are all named, the innermost first. Costs two
/// assignments; `describe`, which is a function without arguments and has to outlive this, is
/// called when it is too late only.
class SumOrigin {
  public:
    template<typename Describe>
    explicit SumOrigin(const Describe& describe)
        : object(&describe), text([](const void* function) -> std::string {
              return (*static_cast<const Describe*>(function))();
          }),
          outer(innermost) {
        innermost = this;
    }
    template<typename Describe>
    explicit SumOrigin(const Describe&&) = delete;
    ~SumOrigin() { innermost = outer; }
    SumOrigin(const SumOrigin&) = delete;
    SumOrigin& operator=(const SumOrigin&) = delete;

    /// " (codex, gpt-5, 2026-03-10)" for the present thread; empty where nothing was said.
    static std::string described();

  private:
    const void* object;
    std::string (*text)(const void*);
    const SumOrigin* outer;
    static thread_local constinit const SumOrigin* innermost;
};

} // namespace tokwatch

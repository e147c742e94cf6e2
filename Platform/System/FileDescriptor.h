#pragma once

#include <unistd.h>
#include <utility>

namespace tokwatch {

/// A descriptor of the system that is closed with its owner.
class FileDescriptor {
  public:
    explicit FileDescriptor(int owned = -1) : number(owned) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number(std::exchange(other.number, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number, other.number);
        return *this;
    }
    ~FileDescriptor() {
        if (number >= 0) close(number);
    }

    bool isOpen() const { return number >= 0; }
    int get() const { return number; }

  private:
    int number;
};

} // namespace tokwatch

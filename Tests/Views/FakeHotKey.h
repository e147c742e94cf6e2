#pragma once

#include "KivoHotKeys/GlobalHotKey.h"

#include <memory>

namespace tokwatch::testing {

/// A desktop that lends all hot keys but one.
class FakeHotKey final : public kivo::GlobalHotKey {
  public:
    static std::unique_ptr<GlobalHotKey> make() { return std::make_unique<FakeHotKey>(); }

    void bind(const kivo::HotKey& key) override {
        emit settled(textOf(key) == u"Ctrl+Alt+X" ? kivo::HotKeyState::taken
                                                  : kivo::HotKeyState::bound);
    }
    void release() override {}
    void setPaused(bool /*isPaused*/) override {}
    void look() override { ++looks; }

    int looks = 0;
};

} // namespace tokwatch::testing

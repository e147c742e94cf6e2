#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/// What tests are written in: their own words, GoogleTest's without a prefix, and the standard
/// library's everyday types.
namespace tokwatch::testing {

using namespace ::testing;

} // namespace tokwatch::testing

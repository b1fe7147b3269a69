// Long animations as files, whose frames stay packed.
#pragma once

#include <cstdint>
#include <filesystem>

namespace vellum::bench {

/// A folder of this run, which goes with it.
const std::filesystem::path& scratch();
/// An animated PNG of `count` frames of 24 bits with a text, made of some streams that take turns.
std::filesystem::path stored_file(std::uint32_t count, std::uint32_t width, std::uint32_t height);

}  // namespace vellum::bench

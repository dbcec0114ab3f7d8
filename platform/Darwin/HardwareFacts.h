#pragma once

#include <Host/HostTree.h>

#include <cstdint>
#include <optional>
#include <string>

// What the host's kernel tells of the computer. Nothing where it does not.

/// The processor's kind by its name on a Mac, where Macs have had such.
std::optional<std::string> MachineName();
/// The maker's name of the computer.
std::optional<std::string> ModelName();
/// Processors in use.
std::optional<uint64_t> ProcessorCount();
/// Bytes of memory that the system can use.
std::optional<uint64_t> MemorySize();
/// Bytes of one of the first processor's caches, others of which may have more. @param level from 1. @param kind "Instruction"
/// or "Data"; a cache for both, "Unified", is either.
std::optional<uint64_t> CacheSize(const HostTree& host, int level, const std::string& kind);

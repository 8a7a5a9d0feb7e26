#include "warc_writer.h"

#include <cstdint>
#include <cstdio>

namespace zestra_tool {
namespace {

// FNV-1a over `text`, from the offset basis `basis`.
std::uint64_t Fnv1a(std::string_view text, std::uint64_t basis) {
  std::uint64_t hash = basis;
  for (unsigned char c : text) {
    hash ^= c;
    hash *= 0x100000001B3u;
  }
  return hash;
}

}  // namespace

std::string ConversionRecordId(std::string_view source_id) {
  const std::uint64_t high = Fnv1a(source_id, 0xCBF29CE484222325u);
  const std::uint64_t low = Fnv1a(source_id, high ^ 0x9E3779B97F4A7C15u);
  // Version 8 (a UUID of the application's own making), variant 10.
  char id[64];
  std::snprintf(id, sizeof id, "<urn:uuid:%08x-%04x-8%03x-%04x-%012llx>", static_cast<unsigned>(high >> 32),
                static_cast<unsigned>((high >> 16) & 0xFFFF), static_cast<unsigned>(high & 0xFFF),
                static_cast<unsigned>(0x8000 | ((low >> 48) & 0x3FFF)),
                static_cast<unsigned long long>(low & 0xFFFFFFFFFFFFull));
  return id;
}

std::string ConversionRecord(std::string_view url, std::string_view date, std::string_view source_id,
                             std::string_view text) {
  std::string record = "WARC/1.1\r\nWARC-Type: conversion\r\n";
  if (!url.empty()) record.append("WARC-Target-URI: ").append(url).append("\r\n");
  if (!date.empty()) record.append("WARC-Date: ").append(date).append("\r\n");
  record.append("WARC-Record-ID: ").append(ConversionRecordId(source_id)).append("\r\n");
  if (!source_id.empty()) record.append("WARC-Refers-To: ").append(source_id).append("\r\n");
  record.append("Content-Type: text/plain\r\n");
  record.append("Content-Length: ").append(std::to_string(text.size())).append("\r\n\r\n");
  record.append(text).append("\r\n\r\n");
  return record;
}

}  // namespace zestra_tool

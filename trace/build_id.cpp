// SPDX-License-Identifier: MIT
// Reads the notes of a loaded library.
#include "trace/build_id.h"

#include <cstdio>
#include <cstring>
#include <elf.h>
#include <link.h>
#include <span>

namespace {

// Notes are a header, a name and a description, each filled up to 4 bytes.
std::string BuildIdIn(const unsigned char* note, std::size_t bytes)
{
  const auto filledUp = [](std::size_t size) { return (size + 3) / 4 * 4; };
  for (std::size_t at = 0; at + sizeof(ElfW(Nhdr)) <= bytes;) {
    ElfW(Nhdr) header;
    std::memcpy(&header, note + at, sizeof header);
    const std::size_t text = at + sizeof header + filledUp(header.n_namesz);
    if (text + header.n_descsz > bytes) return "";
    at = text + filledUp(header.n_descsz);
    if (header.n_type != NT_GNU_BUILD_ID) continue;
    std::string id;
    for (std::size_t index = 0; index < header.n_descsz; ++index) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02x", note[text + index]);
      id += digits;
    }
    return id;
  }
  return "";
}

struct TSearch
{
  ElfW(Addr) address;
  std::string id;
};

// Ends the search with the library that has the address.
int LookAt(dl_phdr_info* info, std::size_t /*size*/, void* data)
{
  auto& search = *static_cast<TSearch*>(data);
  const std::span<const ElfW(Phdr)> segments(info->dlpi_phdr, info->dlpi_phnum);
  bool isIt = false;
  for (const auto& segment : segments)
    isIt |= segment.p_type == PT_LOAD && search.address - (info->dlpi_addr + segment.p_vaddr) < segment.p_memsz;
  if (!isIt) return 0;
  for (const auto& segment : segments)
    if (segment.p_type == PT_NOTE && search.id.empty())
      search.id =
          BuildIdIn(reinterpret_cast<const unsigned char*>(info->dlpi_addr + segment.p_vaddr), segment.p_memsz);
  return 1;
}

} // namespace

std::string BuildIdOf(const void* address)
{
  TSearch search = {reinterpret_cast<ElfW(Addr)>(address), ""};
  dl_iterate_phdr(LookAt, &search);
  return search.id;
}

#include "simulator/linux/import_hook.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

namespace zem::simulator {
namespace {

static_assert(sizeof(void*) == 8, "the slots are those of x86-64");

// The tables by which the loader has filled a library's slots.
struct ImportTables {
  const Elf64_Sym* symbols = nullptr;
  const char* names = nullptr;
  const Elf64_Rela* calls = nullptr;  // of functions that are called
  std::size_t callsSize = 0;
  const Elf64_Rela* others = nullptr;  // also of functions whose address is taken
  std::size_t othersSize = 0;
};

ImportTables TablesOf(const link_map& library) {
  ImportTables tables;
  for (const Elf64_Dyn* entry = library.l_ld; entry->d_tag != DT_NULL; ++entry) {
    switch (entry->d_tag) {
      case DT_SYMTAB:
        tables.symbols = reinterpret_cast<const Elf64_Sym*>(entry->d_un.d_ptr);
        break;
      case DT_STRTAB:
        tables.names = reinterpret_cast<const char*>(entry->d_un.d_ptr);
        break;
      case DT_JMPREL:
        tables.calls = reinterpret_cast<const Elf64_Rela*>(entry->d_un.d_ptr);
        break;
      case DT_PLTRELSZ:
        tables.callsSize = entry->d_un.d_val;
        break;
      case DT_RELA:
        tables.others = reinterpret_cast<const Elf64_Rela*>(entry->d_un.d_ptr);
        break;
      case DT_RELASZ:
        tables.othersSize = entry->d_un.d_val;
        break;
      default:
        break;
    }
  }
  return tables;
}

std::vector<std::uintptr_t*> FindSlots(const link_map& library, std::string_view name) {
  const ImportTables tables = TablesOf(library);
  std::vector<std::uintptr_t*> slots;
  const auto search = [&](const Elf64_Rela* entries, std::size_t size) {
    for (const Elf64_Rela& entry : std::span(entries, size / sizeof(Elf64_Rela))) {
      const std::uint64_t type = ELF64_R_TYPE(entry.r_info);
      const Elf64_Sym& symbol = tables.symbols[ELF64_R_SYM(entry.r_info)];
      if ((type == R_X86_64_JUMP_SLOT || type == R_X86_64_GLOB_DAT) &&
          name == tables.names + symbol.st_name) {
        slots.push_back(reinterpret_cast<std::uintptr_t*>(library.l_addr + entry.r_offset));
      }
    }
  };
  search(tables.calls, tables.callsSize);
  search(tables.others, tables.othersSize);
  return slots;
}

}  // namespace

void ReleaseLibrary::operator()(void* library) const { static_cast<void>(::dlclose(library)); }

HeldLibrary HoldLibrary() { return HoldLibrary("libZemUVCExtApi.so.1"); }

HeldLibrary HoldLibrary(const char* name) {
  HeldLibrary library(::dlopen(name, RTLD_NOW | RTLD_NOLOAD));
  if (!library) {
    throw std::runtime_error(std::string(name) + " is not loaded in this process");
  }
  return library;
}

ImportHook::ImportHook(const HeldLibrary& library, const char* name, std::uintptr_t replacement) {
  const link_map* map = nullptr;
  if (::dlinfo(library.get(), RTLD_DI_LINKMAP, &map) == 0) {
    slots_ = FindSlots(*map, name);
  }
  if (slots_.empty()) {
    throw std::runtime_error(std::string("the library does not import ") + name);
  }
  original_ = *slots_.front();
  if (!Write(replacement)) {
    const std::string reason = std::strerror(errno);
    Write(original_);
    throw std::runtime_error(std::string("the library's import ") + name +
                             " cannot be written: " + reason);
  }
}

// What could be written once can be again.
ImportHook::~ImportHook() { Write(original_); }

bool ImportHook::Write(std::uintptr_t function) const {
  const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  for (std::uintptr_t* const slot : slots_) {
    // The loader has made the slots read-only once they were filled.
    void* const start =
        reinterpret_cast<void*>(reinterpret_cast<std::uintptr_t>(slot) / page * page);
    if (::mprotect(start, page, PROT_READ | PROT_WRITE) != 0) {
      return false;
    }
    *slot = function;
    static_cast<void>(::mprotect(start, page, PROT_READ));
  }
  return true;
}

}  // namespace zem::simulator

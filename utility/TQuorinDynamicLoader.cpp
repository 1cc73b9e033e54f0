// SPDX-License-Identifier: MIT
// Shared libraries that are loaded by name.
#include "utility/TQuorinDynamicLoader.h"

#include "utility/TQuorinMisc.h"

#include <dlfcn.h>
#include <sys/auxv.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <utility>

namespace QuorinUtility {

namespace {

constexpr const char* kHere = "./";
constexpr const char* kNoFile = "not a regular file";
constexpr const char* kPrivileged = "a process with more rights than its user loads no library from a directory";

/// Whether the program got rights that its user does not have (set-user-ID, set-group-ID, capabilities). The user
/// chooses the working directory, so what lies there must not run with these rights.
bool IsPrivileged()
{
  return ::getauxval(AT_SECURE) != 0;
}

/// The loader would wait, perhaps without limit, until something is written into it. It refuses directories itself. A
/// bare name is no path: the system searches for it in other places.
bool IsPipeOrDevice(const char* path)
{
  struct stat status = {};
  return std::strchr(path, '/') && ::stat(path, &status) == 0 && !S_ISREG(status.st_mode) &&
         !S_ISDIR(status.st_mode);
}

TQuorinFilePath Delimited(TQuorinFilePath directory)
{
  directory.DelimitEnd();
  return directory;
}

} // namespace

TQuorinDynamicLoader::TQuorinDynamicLoader(TQuorinFilePath library, const TQuorinFilePath* directory,
                                           bool directoryOnly)
    : library_(std::make_unique<TQuorinFilePath>(std::move(library))),
      directory_(std::make_unique<TQuorinFilePath>(directory ? Delimited(*directory) : TQuorinFilePath(kHere))),
      directoryOnly_(directoryOnly)
{
  SetErrorMessage(NO_ERROR_MSG);
}

int TQuorinDynamicLoader::Open()
{
  if (handle_) return kOpen;
  // A name that is absolute already is not looked for below the directory.
  const bool isAbsolute = library_->GetForwardSlashPath()[0] == '/';
  const TQuorinFilePath candidate = isAbsolute && !directoryOnly_ ? *library_ : *directory_ + *library_;
  const bool isThere = ::access(candidate.GetForwardSlashPath(), F_OK) == 0;
  if (!isThere && directoryOnly_) return kNotInDirectory;

  const char* const path = isThere ? candidate.GetForwardSlashPath() : library_->GetForwardSlashPath();
  if (std::strchr(path, '/') && IsPrivileged()) {
    SetErrorMessage(kPrivileged);
    return kRefused;
  }
  if (IsPipeOrDevice(path)) {
    SetErrorMessage(kNoFile);
    return kRefused;
  }
  handle_ = ::dlopen(path, RTLD_LAZY);
  if (!handle_) {
    updateErrorMessage();
    return kRefused;
  }
  SetErrorMessage(NO_ERROR_MSG);
  return kOpen;
}

// Without a handle the system would look through everything that the program has loaded.
void* TQuorinDynamicLoader::GetFunction(const char* symbol) const
{
  if (!handle_ || isClosed_ || !symbol) return nullptr;
  return ::dlsym(handle_, symbol);
}

int TQuorinDynamicLoader::Close()
{
  if (handle_ && !std::exchange(isClosed_, true)) ::dlclose(handle_);
  return 0;
}

int TQuorinDynamicLoader::updateErrorMessage()
{
  const char* const text = ::dlerror(); // NOLINT(concurrency-mt-unsafe): each thread has its own error
  SetErrorMessage(text ? text : NO_ERROR_MSG);
  return 0;
}

void TQuorinDynamicLoader::SetErrorMessage(const char* text)
{
  TQuorinMisc::strncpy(errorMessage_.data(), text, errorMessage_.size() - 1);
}

} // namespace QuorinUtility

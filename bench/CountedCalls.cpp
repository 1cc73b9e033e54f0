// SPDX-License-Identifier: MIT
// Counts what the path of a frame must not do: allocate, work with files, log.
//
// The C library's functions for memory and for opening files, and the feature library's functions that frames
// need, are defined here in front of the real ones.
#include "CountedCalls.h"

#include "BenchmarkCamera.h"
#include "utility/TQuorinLibDebugOutput.h"
#include "vxcore.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <new>
#include <string>
#include <sys/stat.h>
#include <unistd.h>

// The memory functions under the names that glibc keeps for programs which put their own in front. Those are
// visible to every library of the process.
#pragma GCC visibility push(default)
extern "C" {
void* __libc_malloc(std::size_t sizeBytes);
void* __libc_calloc(std::size_t count, std::size_t sizeBytes);
void* __libc_realloc(void* memory, std::size_t sizeBytes);
void* __libc_memalign(std::size_t alignment, std::size_t sizeBytes);
void* malloc(std::size_t sizeBytes) noexcept;
void* calloc(std::size_t count, std::size_t sizeBytes) noexcept;
void* realloc(void* memory, std::size_t sizeBytes) noexcept;
void* aligned_alloc(std::size_t alignment, std::size_t sizeBytes) noexcept;
int posix_memalign(void** memory, std::size_t alignment, std::size_t sizeBytes) noexcept;
int open(const char* path, int flags, ...);
FILE* fopen(const char* path, const char* mode);
}
#pragma GCC visibility pop

namespace {

using QuorinUtility::TQuorinLibDebugOutput;

std::atomic<long> allocationCount{0};
std::atomic<long> cameraAllocationCount{0};
std::atomic<long> openCount{0};
int kernelCounters = -1; // file descriptors
int logFile = -1;
thread_local int callsIntoCamera = 0;

void countAllocation()
{
  (callsIntoCamera > 0 ? cameraAllocationCount : allocationCount).fetch_add(1, std::memory_order_relaxed);
}

template <class Function>
Function* next(const char* name)
{
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Calls a function of the feature library; what it allocates is its own affair.
template <class Function, class... Arguments>
int callCamera(Function* function, Arguments... arguments)
{
  ++callsIntoCamera;
  const int code = function(arguments...);
  --callsIntoCamera;
  return code;
}

long numberAfter(const char* text, const char* name)
{
  const char* const place = std::strstr(text, name);
  return place ? std::strtol(place + std::strlen(name), nullptr, 10) : 0;
}

long countReadsAndWrites()
{
  char text[512] = {};
  require(pread(kernelCounters, text, sizeof text - 1, 0) > 0, "the kernel counts reads and writes");
  return numberAfter(text, "syscr: ") + numberAfter(text, "syscw: ");
}

long countLogBytes()
{
  struct stat status = {};
  require(fstat(logFile, &status) == 0, "the log has a file");
  return static_cast<long>(status.st_size);
}

/// A log that writes everything, into a file that only this process has.
void openLog()
{
  char path[] = "/tmp/steady_state_XXXXXX";
  logFile = mkstemp(path);
  require(logFile >= 0, "a file for the log");
  require(TQuorinLibDebugOutput::Configure((std::string("debug:") + path).c_str()), "the log can be switched on");
  unlink(path);
}

void logALine()
{
  TQuorinLibDebugOutput::Output("file", 1, "function", TQuorinLibDebugOutput::Debug, "a line");
}

/// Does one of each, and looks whether it was seen.
void checkCounters()
{
  logALine(); // the first one has the C library set up its clock
  const CountedCalls first = CountedCalls::now();
  const CountedCalls before = CountedCalls::now();
  require(before.since(first).readsAndWrites == 0, "looks are not counted");

  void* volatile memory = std::malloc(1);
  std::free(memory);
  memory = ::operator new(1); // as a plain function it may not be left out
  ::operator delete(memory);
  const int file = open("/dev/null", O_WRONLY);
  require(write(file, "x", 1) == 1, "writing to /dev/null");
  close(file);
  logALine();
  const CountedCalls seen = CountedCalls::now().since(before);
  require(seen.allocations == 2, "allocations are counted");
  require(seen.opens == 1, "opens are counted");
  require(seen.readsAndWrites == 2, "a write and a log line are counted");
  require(seen.logBytes > 0, "what is logged is counted");
}

} // namespace

void CountedCalls::begin()
{
  kernelCounters = open("/proc/self/io", O_RDONLY);
  require(kernelCounters >= 0, "the kernel counts reads and writes");
  openLog();
  checkCounters();
}

CountedCalls CountedCalls::now()
{
  return {allocationCount, cameraAllocationCount, openCount, countReadsAndWrites(), countLogBytes()};
}

CountedCalls CountedCalls::since(const CountedCalls& before) const
{
  constexpr long kReadsOfALook = 1;
  return {allocations - before.allocations, cameraAllocations - before.cameraAllocations, opens - before.opens,
          readsAndWrites - before.readsAndWrites - kReadsOfALook, logBytes - before.logBytes};
}

void* malloc(std::size_t sizeBytes) noexcept
{
  countAllocation();
  return __libc_malloc(sizeBytes);
}

void* calloc(std::size_t count, std::size_t sizeBytes) noexcept
{
  countAllocation();
  return __libc_calloc(count, sizeBytes);
}

void* realloc(void* memory, std::size_t sizeBytes) noexcept
{
  countAllocation();
  return __libc_realloc(memory, sizeBytes);
}

void* aligned_alloc(std::size_t alignment, std::size_t sizeBytes) noexcept
{
  countAllocation();
  return __libc_memalign(alignment, sizeBytes);
}

int posix_memalign(void** memory, std::size_t alignment, std::size_t sizeBytes) noexcept
{
  countAllocation();
  *memory = __libc_memalign(alignment, sizeBytes);
  return *memory ? 0 : ENOMEM;
}

int open(const char* path, int flags, ...)
{
  std::va_list arguments;
  va_start(arguments, flags);
  const int mode = va_arg(arguments, int);
  va_end(arguments);
  ++openCount;
  static auto* const real = next<int(const char*, int, ...)>("open");
  return real(path, flags, mode);
}

FILE* fopen(const char* path, const char* mode)
{
  ++openCount;
  static auto* const real = next<FILE*(const char*, const char*)>("fopen");
  return real(path, mode);
}

int VX_WaitBuffer(int handle, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs)
{
  static auto* const real = next<decltype(VX_WaitBuffer)>("VX_WaitBuffer");
  return callCamera(real, handle, buffer, sizeBytes, timeoutMs);
}

int VX_QueueBuffer(int handle, unsigned char* buffer, int sizeBytes)
{
  static auto* const real = next<decltype(VX_QueueBuffer)>("VX_QueueBuffer");
  return callCamera(real, handle, buffer, sizeBytes);
}

int VX_GetInt(int handle, const wchar_t* feature, long long* value)
{
  static auto* const real = next<decltype(VX_GetInt)>("VX_GetInt");
  return callCamera(real, handle, feature, value);
}

int VX_GetEnumerated(int handle, const wchar_t* feature, int* index)
{
  static auto* const real = next<decltype(VX_GetEnumerated)>("VX_GetEnumerated");
  return callCamera(real, handle, feature, index);
}

int VX_GetEnumeratedString(int handle, const wchar_t* feature, int index, wchar_t* text, int length)
{
  static auto* const real = next<decltype(VX_GetEnumeratedString)>("VX_GetEnumeratedString");
  return callCamera(real, handle, feature, index, text, length);
}

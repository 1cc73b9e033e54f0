// SPDX-License-Identifier: MIT
// The library that drives a trigger board.
#include "service/TLoadUSBi2cDll.h"

#include "utility/TQuorinDirectoryList.h"
#include "utility/TQuorinDynamicLoader.h"
#include "utility/TQuorinFilePath.h"
#include "utility/TQuorinLibDebugOutput.h"

#include <dlfcn.h>

using QuorinUtility::TQuorinDirectoryList;
using QuorinUtility::TQuorinDynamicLoader;
using QuorinUtility::TQuorinFilePath;
using QuorinUtility::TQuorinLibDebugOutput;

namespace {

constexpr const char* kLibraryName = "usbi2c.dll";

/// Whether an address is in the shared object that this code is in.
bool IsOurs(const void* address)
{
  Dl_info its = {};
  Dl_info ours = {};
  return ::dladdr(address, &its) != 0 && ::dladdr(kLibraryName, &ours) != 0 && its.dli_fbase == ours.dli_fbase;
}

} // namespace

TLoadUSBi2cDll::TLoadUSBi2cDll()
    : libraryPath_(std::make_unique<TQuorinFilePath>(TQuorinDirectoryList::GetCurrentDir() + kLibraryName))
{
  dynamicLoadUSBi2c();
}

TLoadUSBi2cDll::TLoadUSBi2cDll(TUnloaded) {}

TLoadUSBi2cDll::~TLoadUSBi2cDll()
{
  unloadUSBi2c();
}

int TLoadUSBi2cDll::dynamicLoadUSBi2c()
{
  unloadUSBi2c();
  if (!libraryPath_) return 0;
  loader_ = std::make_unique<TQuorinDynamicLoader>(*libraryPath_, nullptr, false);
  isLoaded_ = loader_->Open() == TQuorinDynamicLoader::kOpen;
  if (!isLoaded_) {
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, TQuorinLibDebugOutput::Info,
                                  "no trigger-board library: %s", loader_->GetErrorMessage());
    return 0;
  }
  if (!ResolveAll()) unloadUSBi2c();
  return 0;
}

int TLoadUSBi2cDll::unloadUSBi2c()
{
  if (isLoaded_) loader_->Close();
  loader_.reset();
  isLoaded_ = false;
  return 0;
}

bool TLoadUSBi2cDll::ResolveAll()
{
  return Resolve(getAvailableTriggers_, "TriggerBoard_GetAvailableTriggers") &&
         Resolve(getTriggerHandle_, "TriggerBoard_GetTriggerHandle") &&
         Resolve(setCurrentTrigger_, "TriggerBoard_SetCurrentTrigger") &&
         Resolve(initialize_, "TriggerBoard_Initialize") && Resolve(i2cWrite_, "TriggerBoard_I2CWrite") &&
         Resolve(shutDown_, "TriggerBoard_ShutDown") && Resolve(externalTrigger_, "TriggerBoard_ExternalTrigger");
}

// Functions that a library lacks are looked up in the libraries that it is linked to. If this one is among them, its
// functions of the same names are found, and they would forward to themselves.
template <class TFunction>
bool TLoadUSBi2cDll::Resolve(TFunction& function, const char* symbol)
{
  void* const found = loader_->GetFunction(symbol);
  function = found && !IsOurs(found) ? reinterpret_cast<TFunction>(found) : nullptr;
  if (!function)
    TQuorinLibDebugOutput::Output(__FILE__, __LINE__, __func__, "%s has no %s and is not used",
                                  libraryPath_->GetForwardSlashPath(), symbol);
  return function != nullptr;
}

int TLoadUSBi2cDll::CallTriggerBoard_GetAvailableTriggers(int* count) const
{
  return Forward(getAvailableTriggers_, count);
}

int TLoadUSBi2cDll::CallTriggerBoard_GetTriggerHandle(int index, int* handle) const
{
  return Forward(getTriggerHandle_, index, handle);
}

int TLoadUSBi2cDll::CallTriggerBoard_SetCurrentTrigger(int index) const
{
  return Forward(setCurrentTrigger_, index);
}

int TLoadUSBi2cDll::CallTriggerBoard_Initialize() const
{
  return Forward(initialize_);
}

int TLoadUSBi2cDll::CallTriggerBoard_I2CWrite(unsigned char first, unsigned char second, unsigned char third) const
{
  return Forward(i2cWrite_, first, second, third);
}

int TLoadUSBi2cDll::CallTriggerBoard_ShutDown() const
{
  return Forward(shutDown_);
}

int TLoadUSBi2cDll::CallTriggerBoard_ExternalTrigger(int trigger, unsigned long first, unsigned long second) const
{
  return Forward(externalTrigger_, trigger, first, second);
}

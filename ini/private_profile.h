// SPDX-License-Identifier: MIT
// The profile functions of the public header, as the library calls them.
#pragma once

namespace EntryPoint {

unsigned int GetPrivateProfileInt(const char* section, const char* key, int defaultValue, const char* fileName);
unsigned int GetPrivateProfileString(const char* section, const char* key, const char* defaultValue, char* buffer,
                                     unsigned int size, const char* fileName);
unsigned int WritePrivateProfileString(const char* section, const char* key, const char* value,
                                       const char* fileName);

} // namespace EntryPoint

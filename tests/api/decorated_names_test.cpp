// SPDX-License-Identifier: MIT
// A program of the old kind: it declares functions as C++ and so links to their decorated names. It needs no
// camera.
#include "vxmcd_result_codes.h"

#include <cstdio>
#include <string>

unsigned int GetAvailableCameras(long* count);
unsigned int GetCameraHandle(long index, long* handle);
unsigned int GetCurrentCamera(long* handle);
unsigned int SetCurrentCamera(long handle);
unsigned int getSDKVersion(unsigned int& major, unsigned int& minor, unsigned int& build, unsigned int& revision);
unsigned int TriggerModeFeatureFinder(std::wstring& value);
unsigned int WaitForAcquisitionByHandle(long handle);
unsigned int WaitForAcquisitionByHandleTimeOut(long handle, int timeoutMs);
unsigned int GetAcquisitionProgress(long* accumulations, long* series);
unsigned int GetSizeOfCircularBuffer(long* size);
unsigned int GetAcquiredData8(unsigned char* array, unsigned long size);
unsigned int GetAcquiredData16(unsigned short* array, unsigned long size);
unsigned int GetAcquiredData(int* array, unsigned long size);
unsigned int GetOldestImage8(unsigned char* array, unsigned long size);
unsigned int GetOldestImage16(unsigned short* array, unsigned long size);
unsigned int GetOldestImage(int* array, unsigned long size);
unsigned int GetMostRecentImage8(unsigned char* array, unsigned long size);
unsigned int GetMostRecentImage16(unsigned short* array, unsigned long size);
unsigned int GetMostRecentImage(int* array, unsigned long size);
unsigned int GetImages8(long first, long last, unsigned char* array, unsigned long size, long* from, long* to);
unsigned int GetImages16(long first, long last, unsigned short* array, unsigned long size, long* from, long* to);
unsigned int GetImages(long first, long last, int* array, unsigned long size, long* from, long* to);
unsigned int GetNumberAvailableImages(int* first, int* last);
unsigned int GetTotalNumberImagesAcquired(long* count);
unsigned int I2CBurstRead(unsigned char address, long count, unsigned char* data);
unsigned int I2CBurstWrite(unsigned char address, long count, unsigned char* data);
void extractNumberFromString(wchar_t* text, int& number);
unsigned int GetPrivateProfileInt(const char* section, const char* key, int defaultValue, const char* fileName);
unsigned int GetPrivateProfileString(const char* section, const char* key, const char* defaultValue, char* buffer,
                                     unsigned int size, const char* fileName);
unsigned int WritePrivateProfileString(const char* section, const char* key, const char* value,
                                       const char* fileName);
#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason) unsigned int name arguments;
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason) unsigned int name arguments;
#include "api/fixed_results.def"

namespace {

constexpr unsigned int kSuccess = 20002;
constexpr unsigned int kInvalid = 20066;
constexpr unsigned int kNotInitialized = 20075;

int failures = 0;

void Expect(unsigned int expected, unsigned int code, const char* call)
{
  if (code == expected) return;
  std::printf("%s returned %u, not %u\n", call, code, expected);
  ++failures;
}

template <class... Arguments>
unsigned int CallWithZeros(unsigned int (*function)(Arguments...))
{
  return function(Arguments()...);
}

} // namespace

#define EXPECT_CODE(expected, call) Expect(expected, call, #call)

int main()
{
  long a = 0;
  long b = 0;
  int i = 0;
  unsigned char bytes[1] = {};
  unsigned short words[1] = {};
  int pixels[1] = {};
  unsigned int version[4] = {};
  std::wstring trigger = L"unchanged";

  EXPECT_CODE(kSuccess, GetAvailableCameras(&a));
  EXPECT_CODE(kSuccess, GetCameraHandle(0, &b));
  EXPECT_CODE(kInvalid, SetCurrentCamera(100));
  EXPECT_CODE(kSuccess, GetCurrentCamera(&a));
  EXPECT_CODE(kSuccess, getSDKVersion(version[0], version[1], version[2], version[3]));
  EXPECT_CODE(kSuccess, TriggerModeFeatureFinder(trigger));
  EXPECT_CODE(kNotInitialized, WaitForAcquisitionByHandle(-1));
  EXPECT_CODE(kNotInitialized, WaitForAcquisitionByHandleTimeOut(101, 0));
  EXPECT_CODE(kNotInitialized, GetAcquisitionProgress(&a, &b));
  EXPECT_CODE(kNotInitialized, GetSizeOfCircularBuffer(&a));
  EXPECT_CODE(kNotInitialized, GetAcquiredData8(bytes, 1));
  EXPECT_CODE(kNotInitialized, GetAcquiredData16(words, 1));
  EXPECT_CODE(kNotInitialized, GetAcquiredData(pixels, 1));
  EXPECT_CODE(kNotInitialized, GetOldestImage8(bytes, 1));
  EXPECT_CODE(kNotInitialized, GetOldestImage16(words, 1));
  EXPECT_CODE(kNotInitialized, GetOldestImage(pixels, 1));
  EXPECT_CODE(kNotInitialized, GetMostRecentImage8(bytes, 1));
  EXPECT_CODE(kNotInitialized, GetMostRecentImage16(words, 1));
  EXPECT_CODE(kNotInitialized, GetMostRecentImage(pixels, 1));
  EXPECT_CODE(kNotInitialized, GetImages8(1, 1, bytes, 1, &a, &b));
  EXPECT_CODE(kNotInitialized, GetImages16(1, 1, words, 1, &a, &b));
  EXPECT_CODE(kNotInitialized, GetImages(1, 1, pixels, 1, &a, &b));
  EXPECT_CODE(kNotInitialized, GetNumberAvailableImages(&i, &i));
  EXPECT_CODE(kNotInitialized, GetTotalNumberImagesAcquired(&a));
  EXPECT_CODE(kNotInitialized, I2CBurstRead(0x20, 1, bytes));
  EXPECT_CODE(kNotInitialized, I2CBurstWrite(0x20, 1, bytes));
  wchar_t serial[] = L"SN-01234X";
  extractNumberFromString(serial, i);
  char profileText[8] = {};
  EXPECT_CODE(7, GetPrivateProfileInt("section", "key", 7, "no such file"));
  EXPECT_CODE(0, GetPrivateProfileString("section", "key", "text", profileText, 8, "no such file"));
  EXPECT_CODE(0, WritePrivateProfileString("section", "key", "text", "no such file"));

#define FIXED_RESULT_TYPED(name, arguments, symbol, code, reason) Expect(code, CallWithZeros(name), #symbol);
#define FIXED_RESULT_TYPED_ONLY(name, arguments, symbol, code, reason) Expect(code, CallWithZeros(name), #symbol);
#include "api/fixed_results.def"

  if (version[0] != 2 || version[1] != 94 || version[2] != 32007 || version[3] != 0) ++failures;
  if (trigger != L"unchanged") ++failures;
  if (i != 1234) ++failures;
  if (profileText != std::string("text")) ++failures;
  std::printf("%d failures\n", failures);
  return failures == 0 ? 0 : 1;
}

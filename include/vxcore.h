/* SPDX-License-Identifier: MIT */
/* The feature library's interface: cameras as sets of named features, and a queue of frame buffers. */

/**
 * @file vxcore.h
 * Interface of `libvxcore.so.3`, the feature library that `libvxmcd.so.3` drives cameras through.
 *
 * Conventions, valid for every function:
 *
 * 1. Every function returns an `int` code: #VX_SUCCESS (0) or one of the other `VX_` codes below. Outputs are
 *    written only on success.
 * 2. A device is addressed by the handle that VX_Open() wrote. The handle #VX_HANDLE_SYSTEM addresses the library
 *    itself and offers the integer feature "DeviceCount".
 * 3. Features are addressed by name, a NUL-terminated wide string, compared exactly. Which features a camera has,
 *    their kinds and their limits, depends on its model and on its other settings.
 * 4. Texts are written into a caller's buffer of `length` wide characters, terminator included.
 * 5. Every function may be called from any thread. VX_WaitBuffer() waits for a frame. The other functions return when the
 *    camera has answered: with one on a network or a bus VX_InitialiseLibrary(), VX_Open() and VX_Close() may take seconds.
 * 6. Each operation on enumerated features exists under two names, `...Enumerated...` and `...Enum...`, with the
 *    same meaning.
 *
 * Three features say what the camera itself does not know, where the library has them: the string "DeviceSource" where
 * the camera is ("simulated", an address); the integer "FramesLost" how many frames of the last run never came; the
 * string "FeatureSources" which features there are or may be, a line each. A line has six columns, a tab between them:
 * the feature; its origin ("derived", "optional", "emulated" or "map file"); the feature of the camera's own description
 * that is behind it, "" for none; those that may be behind it, with commas between; and the scale and the offset that
 * make a value of the camera one of the library.
 */
#ifndef VXCORE_H
#define VXCORE_H

#include <stddef.h>
#ifndef __cplusplus
#include <wchar.h>
#endif

#if defined(__GNUC__)
#define VXCORE_API __attribute__((visibility("default")))
#else
#define VXCORE_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Handle of the library itself, for the feature "DeviceCount". */
#define VX_HANDLE_SYSTEM 1
/** A handle that is never valid. */
#define VX_HANDLE_NONE (-1)
/** Time-out of VX_WaitBuffer() for a wait without limit. */
#define VX_INFINITE 0xFFFFFFFFu
/** Frame buffers must start at a multiple of this many bytes. */
#define VX_BUFFER_ALIGNMENT 8

/** @name Result codes
 *  @{ */
#define VX_SUCCESS 0             /**< done */
#define VX_ERR_NOT_IMPLEMENTED 2 /**< the camera has no such feature */
#define VX_ERR_NOT_READABLE 3    /**< the feature cannot be read */
#define VX_ERR_NOT_AVAILABLE 4   /**< not available under the present settings */
#define VX_ERR_NOT_WRITABLE 5    /**< the feature cannot be written, or not now: while acquiring, for example */
#define VX_ERR_OUT_OF_RANGE 6    /**< the value is outside the feature's present limits */
#define VX_ERR_START_REFUSED                                                                                      \
  37                              /**< "AcquisitionStart" refused: acquiring already, a queued buffer is too small,
                                            or the settings allow no frame */
#define VX_ERR_NOT_INITIALISED 40 /**< the library is not initialised */
#define VX_ERR_INVALID_HANDLE 41  /**< no open device has this handle */
#define VX_ERR_NO_SUCH_DEVICE 42  /**< there is no camera with this index */
#define VX_ERR_DEVICE_IN_USE 43   /**< another program uses the camera, or this one has it open */
#define VX_ERR_NULL_ARGUMENT 44   /**< a required pointer is null */
#define VX_ERR_WRONG_KIND 45      /**< the feature is of another kind than the operation */
#define VX_ERR_INDEX_NOT_AVAILABLE 46   /**< the enumerated value is not available under the present settings */
#define VX_ERR_INDEX_NOT_IMPLEMENTED 47 /**< the enumerated feature has no value with this index */
#define VX_ERR_STRING_NOT_AVAILABLE 48  /**< the enumerated feature has no value with this text */
#define VX_ERR_TEXT_TOO_LONG 49         /**< the text does not fit the caller's buffer */
#define VX_ERR_TIMED_OUT 50             /**< no frame arrived within the time-out */
#define VX_ERR_BUFFER_MISALIGNED 51     /**< the buffer does not start at a multiple of #VX_BUFFER_ALIGNMENT */
#define VX_ERR_BUFFER_TOO_SMALL 52      /**< the buffer is smaller than "ImageSizeBytes" */
#define VX_ERR_COMMUNICATION 53         /**< the camera does not answer */
#define VX_ERR_OUT_OF_MEMORY 54         /**< out of memory */
#define VX_ERR_CONFIGURATION 55         /**< the configuration of the cameras cannot be read or has an error */
#define VX_ERR_BUS 56                   /**< no device on the bus answered, or it refused the transfer */
#define VX_ERR_HARDWARE_OVERFLOW 100    /**< the camera's memory overflowed: frames were lost */
/** @} */

/** @name Library and devices
 *  Calls are counted: the last VX_FinaliseLibrary() closes every device still open. When the configuration has an
 *  error, VX_InitialiseLibrary() answers #VX_ERR_CONFIGURATION and prints on standard error what is wrong.
 *  @{ */
VXCORE_API int VX_InitialiseLibrary(void);
VXCORE_API int VX_FinaliseLibrary(void);
/** Opens the device at @p deviceIndex (0 to "DeviceCount" - 1) and writes its handle. */
VXCORE_API int VX_Open(int deviceIndex, int* handle);
/** Stops an acquisition, drops every queued buffer and closes the device. No buffer is touched afterwards. A device
 *  that does not answer is closed nevertheless, with #VX_ERR_COMMUNICATION. */
VXCORE_API int VX_Close(int handle);
/** @} */

/** @name Any feature
 *  @p flag becomes 1 or 0. For a feature that the camera does not have it becomes 0, which is not an error here.
 *  @{ */
VXCORE_API int VX_IsImplemented(int handle, const wchar_t* feature, int* flag);
VXCORE_API int VX_IsReadable(int handle, const wchar_t* feature, int* flag);
VXCORE_API int VX_IsWritable(int handle, const wchar_t* feature, int* flag);
/** @} */

/** @name Integer features
 *  @{ */
VXCORE_API int VX_SetInt(int handle, const wchar_t* feature, long long value);
VXCORE_API int VX_GetInt(int handle, const wchar_t* feature, long long* value);
VXCORE_API int VX_GetIntMin(int handle, const wchar_t* feature, long long* minimum);
VXCORE_API int VX_GetIntMax(int handle, const wchar_t* feature, long long* maximum);
/** @} */

/** @name Float features
 *  @{ */
VXCORE_API int VX_SetFloat(int handle, const wchar_t* feature, double value);
VXCORE_API int VX_GetFloat(int handle, const wchar_t* feature, double* value);
VXCORE_API int VX_GetFloatMin(int handle, const wchar_t* feature, double* minimum);
VXCORE_API int VX_GetFloatMax(int handle, const wchar_t* feature, double* maximum);
/** @} */

/** @name Boolean features (0 or 1)
 *  @{ */
VXCORE_API int VX_SetBool(int handle, const wchar_t* feature, int value);
VXCORE_API int VX_GetBool(int handle, const wchar_t* feature, int* value);
/** @} */

/** @name Enumerated features: an index from 0 to count - 1, and a text for each
 *  @{ */
VXCORE_API int VX_SetEnumerated(int handle, const wchar_t* feature, int index);
VXCORE_API int VX_SetEnumeratedString(int handle, const wchar_t* feature, const wchar_t* text);
VXCORE_API int VX_GetEnumerated(int handle, const wchar_t* feature, int* index);
VXCORE_API int VX_GetEnumeratedCount(int handle, const wchar_t* feature, int* count);
VXCORE_API int VX_GetEnumeratedString(int handle, const wchar_t* feature, int index, wchar_t* text, int length);
VXCORE_API int VX_IsEnumeratedIndexAvailable(int handle, const wchar_t* feature, int index, int* flag);
VXCORE_API int VX_IsEnumeratedIndexImplemented(int handle, const wchar_t* feature, int index, int* flag);

VXCORE_API int VX_SetEnumIndex(int handle, const wchar_t* feature, int index);
VXCORE_API int VX_SetEnumString(int handle, const wchar_t* feature, const wchar_t* text);
VXCORE_API int VX_GetEnumIndex(int handle, const wchar_t* feature, int* index);
VXCORE_API int VX_GetEnumCount(int handle, const wchar_t* feature, int* count);
VXCORE_API int VX_GetEnumStringByIndex(int handle, const wchar_t* feature, int index, wchar_t* text, int length);
VXCORE_API int VX_IsEnumIndexAvailable(int handle, const wchar_t* feature, int index, int* flag);
VXCORE_API int VX_IsEnumIndexImplemented(int handle, const wchar_t* feature, int index, int* flag);
/** @} */

/** @name String features
 *  VX_GetStringMaxLength() writes a length in wide characters, terminator included, that suffices for every value.
 *  @{ */
VXCORE_API int VX_SetString(int handle, const wchar_t* feature, const wchar_t* value);
VXCORE_API int VX_GetString(int handle, const wchar_t* feature, wchar_t* value, int length);
VXCORE_API int VX_GetStringMaxLength(int handle, const wchar_t* feature, int* length);
/** @} */

/** Runs a command feature, for example "AcquisitionStart". */
VXCORE_API int VX_Command(int handle, const wchar_t* feature);

/** @name Frame buffers
 *  @{ */
/**
 * Gives a buffer to the device to put a frame into; buffers are filled in the order in which they were queued.
 * @param buffer     start, a multiple of #VX_BUFFER_ALIGNMENT; it belongs to the library until VX_WaitBuffer()
 *                   delivers it, or VX_Flush() or VX_Close() returns
 * @param sizeBytes  at least the present "ImageSizeBytes"
 */
VXCORE_API int VX_QueueBuffer(int handle, unsigned char* buffer, int sizeBytes);
/**
 * Waits for the next filled buffer and delivers it. A wait that begins while the device acquires ends with
 * #VX_ERR_TIMED_OUT as soon as that acquisition has stopped (by "AcquisitionStop", or by its last frame) and no frame
 * is left. A wait that begins while the device does not acquire takes its whole time-out when no frame comes.
 * @param buffer     written with the buffer's start
 * @param sizeBytes  written with the number of bytes of the frame, "ImageSizeBytes" when the run started
 * @param timeoutMs  longest wait in ms; 0 does not wait, #VX_INFINITE waits without limit
 * @return #VX_ERR_TIMED_OUT without a frame; #VX_ERR_COMMUNICATION or #VX_ERR_INVALID_HANDLE when the device was
 *         unplugged or closed meanwhile; #VX_ERR_HARDWARE_OVERFLOW once after frames were lost in the camera
 */
VXCORE_API int VX_WaitBuffer(int handle, unsigned char** buffer, int* sizeBytes, unsigned int timeoutMs);
/** Takes back every queued and every filled buffer. No buffer is touched after it returns. The buffers of a device
 *  that does not answer are taken back nevertheless, with #VX_ERR_COMMUNICATION. */
VXCORE_API int VX_Flush(int handle);
/** @} */

#ifdef __cplusplus
}
#endif

#endif

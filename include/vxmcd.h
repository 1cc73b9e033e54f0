/* SPDX-License-Identifier: MIT */
/* The camera-control interface: one flat set of functions for C and C++. */

/**
 * @file vxmcd.h
 * Camera control for scientific cameras: open a camera, set it up, take images, close it.
 *
 * Conventions, valid for every function unless it says otherwise:
 *
 * 1. Every function returns a result code as `unsigned int`; #RC_SUCCESS (20002) is success. The codes, their meaning
 *    and what to try are in vxmcd_result_codes.h; vxmcd_GetResultName() turns a code into its name.
 * 2. Functions act on the *current camera*, chosen with SetCurrentCamera() and opened with Initialize(). With no open
 *    camera under the current handle they return #RC_NOT_INITIALIZED (20075) and touch nothing.
 * 3. Times are seconds (s) unless a name ends in `Ms`; rates are hertz (Hz); sizes of image arrays are counted in
 *    pixels; images are numbered from 1 over a whole run.
 * 4. Output pointers are written only as each function says. A null output pointer is skipped where no code is stated
 *    for it.
 * 5. Functions may be called from any thread, but one camera's functions are meant for one thread at a time: do not
 *    open, close or switch cameras while other threads use them. Waiting (WaitForAcquisition() and its forms) in one
 *    thread while another calls CancelWait(), AbortAcquisition(), GetStatus() or a retrieval function is fine.
 * 6. Only the functions that say so block; the others return after a few calls into the feature library.
 * 7. One camera acquires at a time: a running acquisition belongs to the camera that is current while it runs. Do not
 *    call SetCurrentCamera() until the run has ended.
 */
#ifndef VXMCD_H
#define VXMCD_H

#include "vxmcd_result_codes.h"

#if defined(__GNUC__)
#define VXMCD_API __attribute__((visibility("default")))
#else
#define VXMCD_API
#endif

/* Functions that old programs link to by a name that encodes their argument types. The library defines them under that
   name and adds the plain name, which is the one declared to users. */
#if defined(__cplusplus) && defined(VXMCD_BUILDING)
#define VXMCD_DECORATED extern "C++" VXMCD_API
#else
#define VXMCD_DECORATED VXMCD_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** What the library keeps for an open camera; opaque to callers. */
struct TCamera;

/** @defgroup results Result codes
 *  Constant texts, never null. Callable at any time from any thread.
 *  @{ */
/** The name of a result code, for example "RC_SUCCESS" for 20002; "unknown result code" for any other number. */
VXMCD_API const char* vxmcd_GetResultName(unsigned int code);
/** What a result code means, in one line; "" for an unknown code. */
VXMCD_API const char* vxmcd_GetResultMeaning(unsigned int code);
/** What a user can try about a result code; "" where there is nothing to say. */
VXMCD_API const char* vxmcd_GetResultAdvice(unsigned int code);
/** @} */

/** @defgroup selection Choosing a camera
 *  Cameras have handles: the camera at index i of the device list has handle 101 + i. None of these functions needs an
 *  open camera.
 *  @{ */
/**
 * Counts the attached cameras.
 * @param count  written with the number of cameras; untouched on failure
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED when the feature library cannot say
 */
VXMCD_DECORATED unsigned int GetAvailableCameras(long* count);
/**
 * Writes the handle of the camera at an index.
 * @param cameraIndex  0 to count - 1
 * @param handle       written with 101 + @p cameraIndex; null writes nothing and is success
 * @return #RC_SUCCESS; #RC_P1_INVALID when there is no such camera; the code of GetAvailableCameras() when that fails
 */
VXMCD_DECORATED unsigned int GetCameraHandle(long cameraIndex, long* handle);
/**
 * Makes a camera the current one. It need not be open: Initialize() opens it.
 * @param handle  101 to 100 + count
 * @return #RC_SUCCESS; #RC_P1_INVALID when no camera has this handle; the code of GetAvailableCameras() when that fails
 */
VXMCD_DECORATED unsigned int SetCurrentCamera(long handle);
/** Writes the current handle (101 at first), whether or not that camera is open. Returns #RC_SUCCESS. */
VXMCD_DECORATED unsigned int GetCurrentCamera(long* handle);
/**
 * Writes the feature library's handle of the current camera, -1 when it is not open.
 * @return #RC_SUCCESS; #RC_P1_INVALID for a null pointer
 */
VXMCD_API unsigned int GetSDK3Handle(int* handle);
/** The record of the camera with this handle, or of no camera when it is not open; never null. Borrowed. */
VXMCD_DECORATED struct TCamera* getCameraFromHandle(long handle);
/** @} */

/** @defgroup lifecycle Opening, closing, version
 *  @{ */
/**
 * Opens the current camera. An open camera stays as it is. Metadata (a timestamp with each frame) is switched on.
 * May take as long as the camera needs to open.
 * @param directory  not used; may be null
 * @return #RC_SUCCESS; #RC_NO_CAMERA when there is no camera under the current handle
 */
VXMCD_API unsigned int Initialize(char* directory);
/**
 * Closes the current camera, aborting an acquisition first; every wait returns. Blocks until the acquisition has
 * stopped (10 s at most) and the camera is closed.
 * @return #RC_SUCCESS; #RC_NOT_INITIALIZED when no camera is open
 */
VXMCD_API unsigned int ShutDown(void);
/** Does nothing; kept for programs that call it. */
VXMCD_API void MyInitialise(void);
/** Does nothing; kept for programs that call it. */
VXMCD_API void MyFinalise(void);
/** Runs when the library is loaded; calls MyInitialise(). */
VXMCD_API void my_init(void);
/** Runs when the library is unloaded; calls MyFinalise(). */
VXMCD_API void my_fini(void);
#ifndef VXMCD_BUILDING
/** Writes the version 2, 94, 32007, 0. Needs no camera. Returns #RC_SUCCESS. */
VXMCD_API unsigned int getSDKVersion(unsigned int* major, unsigned int* minor, unsigned int* build,
                                     unsigned int* revision);
#endif
/**
 * Writes 0 to the first four outputs, the minor version 94 to the fifth and the major version 2 to the sixth. Needs no
 * camera.
 * @return #RC_SUCCESS
 */
VXMCD_API unsigned int GetSoftwareVersion(unsigned int* eprom, unsigned int* cofFile, unsigned int* vxdRevision,
                                          unsigned int* vxdVersion, unsigned int* dllRevision,
                                          unsigned int* dllVersion);
/** GetVersionInfo(): the library's version. */
#define VXMCD_VERSION_LIBRARY 0x40000000
/** GetVersionInfo(): the driver's version, which this library does not know. */
#define VXMCD_VERSION_DRIVER 0x40000001
/**
 * Copies a version text. Needs no camera.
 * @param id      #VXMCD_VERSION_LIBRARY ("2.94.32007.0") or #VXMCD_VERSION_DRIVER ("Unknown")
 * @param buffer  at least @p size bytes; not terminated when the text fills it
 * @param size    bytes to write at most
 * @return #RC_SUCCESS for the library; #RC_NOT_AVAILABLE for the driver, with the text written; checked in this order:
 *         #RC_P1_INVALID for another id, #RC_P3_INVALID for size 0, #RC_P2_INVALID for a null buffer
 */
VXMCD_API unsigned int GetVersionInfo(int id, char* buffer, unsigned int size);
/** @} */

/** @defgroup settings Acquisition settings
 *  They take effect at once where the camera allows it, else at the next StartAcquisition().
 *  @{ */
/**
 * Sets the exposure time.
 * @param seconds  exposure in s; a shorter one than the camera's minimum becomes the minimum
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without the feature; #RC_ACQUIRING when it cannot be changed while the
 *         acquisition runs; #RC_NOT_AVAILABLE when it cannot be changed now; #RC_P1_INVALID when the camera rejects it
 */
VXMCD_API unsigned int SetExposureTime(float seconds);
/**
 * Sets the time from one exposure of an accumulated image to the next.
 * @param seconds  cycle time in s; a shorter one than the camera allows becomes the shortest
 * @return #RC_SUCCESS, also when the camera has no burst rate to set; #RC_NOT_SUPPORTED when the camera cannot
 *         accumulate or fewer than two accumulations are set; #RC_P1_INVALID when the camera rejects it
 */
VXMCD_API unsigned int SetAccumulationCycleTime(float seconds);
/**
 * Sets the time from one image of a series to the next, within the camera's limits.
 * @param seconds  cycle time in s
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without a settable frame rate; #RC_P1_INVALID when the camera rejects it
 */
VXMCD_API unsigned int SetKineticCycleTime(float seconds);
/**
 * Chooses what StartAcquisition() takes.
 * @param mode  1 single image, 2 one accumulated image, 3 series of SetNumberKinetics() images, 5 run until aborted
 * @return #RC_SUCCESS; #RC_P1_INVALID for any other mode
 */
VXMCD_API unsigned int SetAcquisitionMode(int mode);
/**
 * Sets how many exposures are added up to one image (acquisition modes 2 and 3).
 * @param count  1 or more
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED when the camera cannot accumulate; #RC_NOT_AVAILABLE when it cannot be
 *         changed now (it takes effect at the next start); #RC_P1_INVALID for a count it rejects
 */
VXMCD_API unsigned int SetNumberAccumulations(int count);
/**
 * Sets how many images a series has (acquisition mode 3).
 * @param count  1 or more
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED when the camera cannot count frames; #RC_P1_INVALID for a count it rejects
 */
VXMCD_API unsigned int SetNumberKinetics(int count);
/**
 * Chooses the layout of the image area.
 * @param mode  2 tracks, 4 image
 * @return #RC_SUCCESS, whether or not the camera could change it; #RC_P1_INVALID for any other mode
 */
VXMCD_API unsigned int SetReadMode(int mode);
/**
 * Chooses what starts an exposure.
 * @param mode  0 internal, 1 external, 6 external start, 7 external exposure, 10 software
 * @return #RC_SUCCESS; #RC_INVALID_TRIGGER_MODE when the camera does not offer it now; #RC_P1_INVALID for any other
 *         mode; #RC_FEATURE_ERROR when the camera cannot be asked for its external mode
 */
VXMCD_API unsigned int SetTriggerMode(int mode);
/**
 * Triggers one exposure in trigger mode 10.
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED when the camera has no software trigger
 */
VXMCD_API unsigned int SendSoftwareTrigger(void);
/**
 * Lets the next exposure overlap the read-out of the one before.
 * @param on  0 off, 1 on
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED, #RC_NOT_AVAILABLE or #RC_P1_INVALID as the camera answers
 */
VXMCD_API unsigned int SetOverlapMode(int on);
/** The same as SetOverlapMode(). */
VXMCD_API unsigned int SetFrameTransferMode(int on);
/**
 * Reports the times in force, in s. Values that the camera cannot tell are 0.01, 0.03 and 0.03; without a burst rate
 * the accumulate cycle equals the kinetic cycle.
 * @param exposure    written with the exposure time
 * @param accumulate  written with the accumulation cycle time
 * @param kinetic     written with the kinetic cycle time
 * @return #RC_SUCCESS
 */
VXMCD_API unsigned int GetAcquisitionTimings(float* exposure, float* accumulate, float* kinetic);
/**
 * Reports the time the sensor takes to be read out.
 * @param seconds  written with the time in s, or 0 when it cannot be told
 * @return #RC_SUCCESS; #RC_P1_INVALID for a null pointer or a failed read; #RC_NOT_SUPPORTED without the feature;
 *         #RC_NOT_AVAILABLE when it cannot be told now
 */
VXMCD_API unsigned int GetReadOutTime(float* seconds);
/**
 * Reports the longest exposure.
 * @param seconds  written with the time in s, also when the read failed
 * @return #RC_SUCCESS; #RC_P1_INVALID when the camera cannot tell
 */
VXMCD_API unsigned int GetMaximumExposure(float* seconds);
/** @} */

/** @defgroup area Sensor and image area
 *  @{ */
/**
 * Reports the size of the sensor, which is the size of an image until an image area is set.
 * @param xpixels  written with the width in pixels; keeps its value when the camera cannot tell
 * @param ypixels  written with the height in pixels; keeps its value when the camera cannot tell
 * @return #RC_SUCCESS; #RC_P1_INVALID, #RC_P2_INVALID when width or height cannot be told
 */
VXMCD_API unsigned int GetDetector(int* xpixels, int* ypixels);
/** @} */

/** @defgroup acquisition Acquisition
 *  A run fills a ring of frame buffers of about 300,000,000 bytes. A finite run keeps all its images; a run until abort
 *  overwrites the oldest, and hands out intact images as long as fewer new ones have arrived than the ring has buffers.
 *  @{ */
/**
 * Starts a run with the present settings, stopping an earlier one first. Images of the earlier run are gone. Blocks
 * until the run has begun (usually well under 1 ms; up to 10 s when an earlier run has to be stopped first).
 * @return #RC_SUCCESS; #RC_FRAME_UNAVAILABLE when memory or camera refuse; #RC_START_REFUSED after an internal failure;
 *         #RC_FEATURE_ERROR, #RC_ACQUIRING are reserved
 */
VXMCD_API unsigned int StartAcquisition(void);
/**
 * Stops the run; images so far stay available. Blocks until the run has ended (10 s at most). No wait is woken by it:
 * call CancelWait() for that.
 * @return #RC_SUCCESS; #RC_IDLE when the camera is not acquiring; #RC_FEATURE_ERROR when the camera refuses to stop
 */
VXMCD_API unsigned int AbortAcquisition(void);
/**
 * Waits without limit for the next image since the last wait. Blocks. An image, a failure of the run or CancelWait()
 * ends the wait; each image ends one wait, and images that arrive while nobody waits end the next wait at once.
 * After the last image of a run nothing more wakes a wait: prefer the forms with a time-out, and ask GetStatus().
 * @return #RC_SUCCESS; #RC_NO_NEW_DATA when the wait ended without an image
 */
VXMCD_API unsigned int WaitForAcquisition(void);
/** As WaitForAcquisition(), for @p timeoutMs ms at most; -1 waits without limit. */
VXMCD_API unsigned int WaitForAcquisitionTimeOut(int timeoutMs);
/** As WaitForAcquisition(), for the camera with this handle; #RC_NOT_INITIALIZED when it is not open. */
VXMCD_DECORATED unsigned int WaitForAcquisitionByHandle(long handle);
/** As WaitForAcquisitionByHandle(), for @p timeoutMs ms at most; -1 waits without limit. */
VXMCD_DECORATED unsigned int WaitForAcquisitionByHandleTimeOut(long handle, int timeoutMs);
/** Ends every wait, and every later one until the next start, with #RC_NO_NEW_DATA. Returns #RC_SUCCESS. */
VXMCD_API unsigned int CancelWait(void);
/**
 * Reports what the acquisition is doing. A failure stays reported until the next start.
 * @param status  written with #RC_ACQUIRING, #RC_IDLE, #RC_STATUS_TIMED_OUT, #RC_STATUS_HARDWARE_OVERFLOW or
 *                #RC_STATUS_SPOOL_ISSUE
 * @return #RC_SUCCESS
 */
VXMCD_API unsigned int GetStatus(int* status);
/**
 * Reports how far a series has come.
 * @param accumulations  written with 0: accumulations are not reported
 * @param series         written with the number of the newest image; 0 when idle or when the series is complete
 * @return #RC_SUCCESS
 */
VXMCD_DECORATED unsigned int GetAcquisitionProgress(long* accumulations, long* series);
/** Writes the memory budget of the ring, 300,000,000 bytes; it is not a number of images. Returns #RC_SUCCESS. */
VXMCD_DECORATED unsigned int GetSizeOfCircularBuffer(long* size);
/**
 * Frees the ring and every image in it; during a run, as soon as the run has ended.
 * @return #RC_SUCCESS, with or without an open camera
 */
VXMCD_API unsigned int FreeInternalMemory(void);
/** Does nothing; kept for programs that call it. Returns #RC_SUCCESS. */
VXMCD_API unsigned int createAcquisitionEvents(void);
/** @} */

/** @defgroup metadata Metadata
 *  @{ */
/**
 * Switches the timestamp that the camera adds to each frame, from the next start on. Initialize() switches it on.
 * @param enable  0 off, 1 on
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED, #RC_NOT_AVAILABLE or #RC_P1_INVALID as the camera answers
 */
VXMCD_API unsigned int SetMetaData(int enable);
/**
 * Reads the camera's clock at an image of the present or last run. The newest 1,000,000 are kept.
 * @param timestampCount  written with the number of timestamps of the run
 * @param ticks           written with the camera's tick count; it restarts at 0 with each run
 * @param index           image index from 0, counted in exposures: it is divided by the number of accumulations
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without metadata; #RC_NOT_AVAILABLE when it was off at the last start;
 *         #RC_FEATURE_ERROR when the index is not available or the accumulations cannot be read
 */
VXMCD_API unsigned int vxsys_GetRawMetaDataInfo(unsigned int* timestampCount, long long* ticks, unsigned int index);
/** @} */

/** @defgroup retrieval Taking images
 *  Image arrays are dense: row r starts at pixel r x width, width and height being those of the image area. `size`
 *  counts pixels and must equal width x height of one image. The functions ending in 8 give 8-bit pixels and need the
 *  camera's encoding "Mono8"; those ending in 16 give 16-bit pixels (of a 32-bit encoding the low 16 bits); those without
 *  a suffix give 32-bit pixels. All of them copy and convert on the calling thread and never wait for an image.
 *
 *  Codes common to all: #RC_NOT_INITIALIZED; #RC_NOT_SUPPORTED when the encoding cannot be read or converted.
 *  @{ */
/**
 * Copies every image of the finished run, oldest first, one behind the other.
 * @param array  room for @p size pixels *times the number of images*
 * @param size   pixels of one image
 * @return #RC_SUCCESS; #RC_ACQUIRING while the run goes on; #RC_P1_INVALID for a null array; #RC_P2_INVALID for another
 *         size; #RC_NO_NEW_DATA when there is no image
 */
VXMCD_DECORATED unsigned int GetAcquiredData8(unsigned char* array, unsigned long size);
VXMCD_DECORATED unsigned int GetAcquiredData16(unsigned short* array, unsigned long size); /**< @copydoc GetAcquiredData8 */
VXMCD_DECORATED unsigned int GetAcquiredData(int* array, unsigned long size);              /**< @copydoc GetAcquiredData8 */
/**
 * Copies the image after the one that the last call of this family gave; images that were overwritten meanwhile are
 * skipped, which GetTotalNumberImagesAcquired() and a count of one's own calls reveal. A start begins again at image 1.
 * @param array  room for @p size pixels
 * @param size   pixels of one image
 * @return #RC_SUCCESS; #RC_P1_INVALID for a null array; #RC_P2_INVALID for another size; #RC_NO_NEW_DATA when every
 *         image has been given
 */
VXMCD_DECORATED unsigned int GetOldestImage8(unsigned char* array, unsigned long size);
VXMCD_DECORATED unsigned int GetOldestImage16(unsigned short* array, unsigned long size); /**< @copydoc GetOldestImage8 */
VXMCD_DECORATED unsigned int GetOldestImage(int* array, unsigned long size);              /**< @copydoc GetOldestImage8 */
/**
 * Copies the newest image. Does not affect GetOldestImage().
 * @param array  room for @p size pixels
 * @param size   pixels of one image
 * @return #RC_SUCCESS; #RC_P1_INVALID for a null array; #RC_P2_INVALID for another size; #RC_NO_NEW_DATA before the first
 *         image; #RC_FRAME_UNAVAILABLE when it is gone
 */
VXMCD_DECORATED unsigned int GetMostRecentImage8(unsigned char* array, unsigned long size);
VXMCD_DECORATED unsigned int GetMostRecentImage16(unsigned short* array, unsigned long size); /**< @copydoc GetMostRecentImage8 */
VXMCD_DECORATED unsigned int GetMostRecentImage(int* array, unsigned long size);              /**< @copydoc GetMostRecentImage8 */
/**
 * Copies the first image that is still there of the range @p first to @p last, and reports the images of the range that
 * are there. One image is copied, to the place that its number has in the range.
 * @param first       number of the first image wanted, 1 or more
 * @param last        number of the last image wanted, @p first or more
 * @param array       room for @p size x (@p last - @p first + 1) pixels
 * @param size        pixels of one image
 * @param validFirst  written with the number of the image copied, 0 for none
 * @param validLast   written with the number of the last image of the range that is there, 0 for none
 * @return #RC_SUCCESS; #RC_P3_INVALID for a null array; #RC_P4_INVALID for another size; #RC_P1_INVALID when @p first is
 *         below 1; #RC_P2_INVALID when it is above @p last; #RC_NO_NEW_DATA when no image of the range is there
 */
VXMCD_DECORATED unsigned int GetImages8(long first, long last, unsigned char* array, unsigned long size,
                                        long* validFirst, long* validLast);
/** @copydoc GetImages8 */
VXMCD_DECORATED unsigned int GetImages16(long first, long last, unsigned short* array, unsigned long size,
                                         long* validFirst, long* validLast);
/** @copydoc GetImages8 */
VXMCD_DECORATED unsigned int GetImages(long first, long last, int* array, unsigned long size, long* validFirst,
                                       long* validLast);
/**
 * Reports which images are there.
 * @param first  written with the number of the oldest, 0 for none
 * @param last   written with the number of the newest, 0 for none
 * @return #RC_SUCCESS; #RC_P1_INVALID, #RC_P2_INVALID for a null pointer; #RC_NO_NEW_DATA when there is none
 */
VXMCD_DECORATED unsigned int GetNumberAvailableImages(int* first, int* last);
/** Writes how many images the present or last run has brought so far. Returns #RC_SUCCESS. */
VXMCD_DECORATED unsigned int GetTotalNumberImagesAcquired(long* count);
/** Writes nothing; kept for programs that call it. Returns #RC_SUCCESS, also with no open camera. */
VXMCD_DECORATED unsigned int GetNumberNewImages(long* first, long* last);
/** @} */

#ifdef __cplusplus
}
#endif

#endif

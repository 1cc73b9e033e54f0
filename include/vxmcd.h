/* SPDX-License-Identifier: MIT */
/* The camera-control interface: one flat set of functions for C and C++. */

/**
 * @file vxmcd.h
 * Camera control for scientific cameras: open a camera, set it up, take images, close it.
 *
 * Conventions, valid for every function unless it says otherwise:
 *
 * 1. Every function returns a result code as `unsigned int`; #RC_SUCCESS (20002) is success. The codes, their
 *    meaning and what to try are in vxmcd_result_codes.h; vxmcd_GetResultName() turns a code into its name.
 * 2. Functions act on the *current camera*, chosen with SetCurrentCamera() and opened with Initialize(). With no
 *    open camera under the current handle they return #RC_NOT_INITIALIZED (20075) and touch nothing.
 * 3. Times are seconds (s) unless a name ends in `Ms`; rates are hertz (Hz); sizes of image arrays are counted in
 *    pixels; images are numbered from 1 over a whole run.
 * 4. Output pointers are written only as each function says. A null output pointer is skipped where no code is
 *    stated for it.
 * 5. Functions may be called from any thread, but one camera's functions are meant for one thread at a time: do
 *    not open, close or switch cameras while other threads use them. One thread may wait (WaitForAcquisition() and
 *    its forms) while another calls CancelWait(), AbortAcquisition(), GetStatus() or a retrieval function. The current
 *    camera is the same for all threads except those that have their own, see vxmcd_SetCurrentCameraOfThread(): with it
 *    threads use, open and close different cameras at the same time.
 * 6. Only the functions that say so block; the others return after a few calls into the feature library.
 * 7. One camera acquires at a time: a running acquisition belongs to the camera that is current while it runs. Do
 *    not call SetCurrentCamera() until the run has ended. With vxmcd_SetIndependentCameras(), or in threads with their own
 *    current camera, any number of cameras acquire at the same time.
 * 8. Some 430 functions of older cameras are kept so that their programs link and run; they do nothing but return a
 *    code, and some write a fixed value. They are in vxmcd_fixed_results.h, which is part of this file.
 */
#ifndef VXMCD_H
#define VXMCD_H

#include "vxmcd_result_codes.h"

#ifndef __cplusplus
#include <wchar.h>
#endif

#if defined(__GNUC__)
#define VXMCD_API __attribute__((visibility("default")))
#else
#define VXMCD_API
#endif

/* Functions that old programs link to by a name that encodes their argument types. The library defines them under
   that name and adds the plain name, which is the one declared to users. */
#if defined(__cplusplus) && defined(VXMCD_BUILDING)
#define VXMCD_DECORATED extern "C++" VXMCD_API
#else
#define VXMCD_DECORATED VXMCD_API
#endif

/* The arguments of functions that ignore them. Compilers supported C23 before its version number was fixed. */
#if defined(__cplusplus) || (defined(__STDC_VERSION__) && __STDC_VERSION__ >= 202311L)
#define VXMCD_ANY_ARGUMENTS ...
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ > 201710L && defined(__clang__) && __clang_major__ >= 15
#define VXMCD_ANY_ARGUMENTS ...
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ > 201710L && !defined(__clang__) && __GNUC__ >= 13
#define VXMCD_ANY_ARGUMENTS ...
#else
#define VXMCD_ANY_ARGUMENTS
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** The library's record of an open camera; opaque to callers. */
struct TCamera;

/** @defgroup results Result codes
 *  Constant texts, never null. Callable at any time from any thread.
 *  @{ */
/** The name of a result code, for example "RC_SUCCESS" for 20002; "unknown result code" for any other number, also for
 *  the statuses that a few functions return instead of a result code, such as the 0 of GetMaximumBinning(). */
VXMCD_API const char* vxmcd_GetResultName(unsigned int code);
/** What a result code means, in one line; "" for an unknown code. */
VXMCD_API const char* vxmcd_GetResultMeaning(unsigned int code);
/** What a user can try about a result code; "" where there is nothing to say. */
VXMCD_API const char* vxmcd_GetResultAdvice(unsigned int code);
/** @} */

/** @defgroup selection Choosing a camera
 *  Cameras have handles: the camera at index i of the device list has handle 101 + i. No function here needs
 *  an open camera.
 *  @{ */
/**
 * Counts the attached cameras.
 * @param count  written with the number of cameras; untouched on failure
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED when the feature library does not report it
 */
VXMCD_DECORATED unsigned int GetAvailableCameras(long* count);
/**
 * Writes the handle of the camera at an index.
 * @param cameraIndex  0 to count - 1
 * @param handle       written with 101 + @p cameraIndex; null writes nothing and is success
 * @return #RC_SUCCESS; #RC_P1_INVALID when there is no such camera; the code of GetAvailableCameras() when that
 *         fails
 */
VXMCD_DECORATED unsigned int GetCameraHandle(long cameraIndex, long* handle);
/**
 * Makes a camera the current one. It need not be open: Initialize() opens it. For a thread with its own current camera
 * (vxmcd_SetCurrentCameraOfThread()) it changes that one only.
 * @param handle  101 to 100 + count
 * @return #RC_SUCCESS; #RC_P1_INVALID when no camera has this handle; the code of GetAvailableCameras() when that
 *         fails
 */
VXMCD_DECORATED unsigned int SetCurrentCamera(long handle);
/** Writes the current handle (101 at first), whether or not that camera is open: that of the calling thread if it has its
 *  own, else that of the process. Returns #RC_SUCCESS. */
VXMCD_DECORATED unsigned int GetCurrentCamera(long* handle);
/**
 * Gives the calling thread its own current camera, until it is ended: the functions that this thread calls then act on that
 * camera, whichever the other threads choose. A program with a thread for each camera makes this call once in each thread and
 * needs no lock: no thread waits while another one opens, stops or closes another camera.
 *
 * In a thread with its own, SetCurrentCamera() and GetCurrentCamera() change and read that one; gblVxmcdCameraHandle stays
 * the current handle of the process. The camera need not be open: Initialize() opens it, and after ShutDown() it is still the
 * thread's. A run that the thread starts belongs to its camera, as with vxmcd_SetIndependentCameras(1). New threads have none
 * of their own, nor do the library's; callbacks act on the camera of the thread that runs them. A library that uses a camera
 * on a program's threads sets it for the length of its calls and then restores @p earlier.
 *
 * Thread-safe; blocks no longer than SetCurrentCamera(), and not at all for an open camera.
 * @param handle   101 to 100 + count; 0 ends it: the thread then follows the current camera of the process
 * @param earlier  written with the handle that the thread had for itself, 0 for none; untouched on failure; may be null
 * @return #RC_SUCCESS; #RC_P1_INVALID when no camera has this handle; the code of GetAvailableCameras() when that
 *         fails
 */
VXMCD_API unsigned int vxmcd_SetCurrentCameraOfThread(long handle, long* earlier);
/**
 * Writes the feature library's handle of the current camera, -1 when it is not open.
 * @return #RC_SUCCESS; #RC_P1_INVALID for a null pointer
 */
VXMCD_API unsigned int GetSDK3Handle(int* handle);
/** The record of the camera with this handle, or of no camera when it is not open; never null. Borrowed until the
 *  camera's ShutDown(). */
VXMCD_DECORATED struct TCamera* getCameraFromHandle(long handle);
/**
 * Chooses whether several cameras may acquire at the same time. It counts for all cameras of the process, from the next
 * StartAcquisition() of each on.
 *
 * With 0, which is the default, a run takes its frames from the camera that is current at the moment, so that one camera
 * acquires at a time. With 1 a run belongs to the camera that started it: whichever camera is current meanwhile, its
 * frames, its end and its recording are those of its own camera. SetCurrentCamera() then only chooses which camera the
 * next calls are for, also while cameras acquire; WaitForAcquisitionByHandle() needs no choice. The memory of all cameras'
 * images shares a budget, see StartAcquisition().
 *
 * The environment variable VXMCD_INDEPENDENT_CAMERAS, read when the library is loaded, sets it for programs that do not
 * call this function: 1 is on, 0 and nothing are off.
 * Thread-safe; does not block.
 * @param enable  1 on, 0 off
 * @return #RC_SUCCESS, also when it is so already; #RC_P1_INVALID for any other number; #RC_ACQUIRING when it would change
 *         while any camera acquires or is being started; #RC_NOT_SUPPORTED in a child that was forked while cameras were
 *         open
 */
VXMCD_API unsigned int vxmcd_SetIndependentCameras(int enable);
/** @} */

/** @defgroup lifecycle Opening, closing, version
 *  @{ */
/**
 * Opens the current camera. Needs no open camera, and an open one stays as it is. Metadata (a timestamp with each
 * frame) is switched on. May take as long as the camera needs to open. A child process forked while a camera is open
 * cannot open one.
 * @param directory  not used; may be null
 * @return #RC_SUCCESS; #RC_NO_CAMERA when there is no camera under the current handle, or none that can be opened
 */
VXMCD_API unsigned int Initialize(char* directory);
/**
 * Closes the current camera, aborting an acquisition first; every wait returns. A series that is written to disk (see
 * SetSpool()) and whose images have all been delivered is not aborted but finished. Blocks until no caller uses the
 * camera any more: as long as the acquisition thread or another caller is inside a call into the feature library.
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
/** Writes the version 2, 94, 32007, 0. Needs no open camera. Returns #RC_SUCCESS. */
VXMCD_API unsigned int getSDKVersion(unsigned int* major, unsigned int* minor, unsigned int* build,
                                     unsigned int* revision);
#endif
/**
 * Writes 0 to the first four outputs, the minor version 94 to the fifth and the major version 2 to the sixth.
 * Needs no open camera.
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
 * Copies a version text. Needs no open camera.
 * @param id      #VXMCD_VERSION_LIBRARY ("2.94.32007.0") or #VXMCD_VERSION_DRIVER ("Unknown")
 * @param buffer  at least @p size bytes; the rest is filled with 0, and a text that fills it is not terminated
 * @param size    bytes to write at most
 * @return #RC_SUCCESS for the library; #RC_NOT_AVAILABLE for the driver, with the text written; checked in this
 *         order: #RC_P1_INVALID for another id, #RC_P3_INVALID for size 0, #RC_P2_INVALID for a null buffer
 */
VXMCD_API unsigned int GetVersionInfo(int id, char* buffer, unsigned int size);
/** @} */

/** @defgroup settings Acquisition settings
 *  They are written to the camera at once. When the camera refuses one, for example during a run, the function returns
 *  the code that it states; only acquisition mode and counts are remembered then and written at the next
 *  StartAcquisition().
 *  @{ */
/**
 * Sets the exposure time.
 * @param seconds  exposure in s; a value below the camera's minimum becomes the minimum. A value above the
 *                 maximum is not shortened: the camera refuses it and keeps its present exposure
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without the feature; #RC_ACQUIRING when it cannot be changed while the
 *         acquisition runs; #RC_NOT_AVAILABLE when it cannot be changed now; #RC_P1_INVALID when the camera
 *         rejects it
 */
VXMCD_API unsigned int SetExposureTime(float seconds);
/**
 * Sets the time from one exposure of an accumulated image to the next.
 * @param seconds  cycle time in s; a value below the camera's shortest becomes the shortest
 * @return #RC_SUCCESS, also when the camera has no burst rate to set; #RC_NOT_SUPPORTED when the camera cannot
 *         accumulate or fewer than two accumulations are set; #RC_P1_INVALID when the camera rejects it
 */
VXMCD_API unsigned int SetAccumulationCycleTime(float seconds);
/**
 * Sets the time from one image of a series to the next, within the camera's limits.
 * @param seconds  cycle time in s; limits that cannot be read count as none
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without a frame rate; #RC_P1_INVALID when the camera rejects it, as
 *         in the trigger modes that need a trigger for each image (1, 7 and 10)
 */
VXMCD_API unsigned int SetKineticCycleTime(float seconds);
/**
 * Chooses what StartAcquisition() takes.
 * @param mode  1 single image, 2 one accumulated image, 3 series of SetNumberKinetics() images, 5 run until
 *              aborted
 * @return #RC_SUCCESS; #RC_P1_INVALID for any other mode, and when the camera refuses a count that was set for this
 *         mode (the mode before stays)
 */
VXMCD_API unsigned int SetAcquisitionMode(int mode);
/**
 * Sets how many exposures are added up to one image (acquisition modes 2 and 3).
 * @param count  1 or more; outside these modes SetAcquisitionMode() writes it to the camera
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED when the camera cannot accumulate; #RC_NOT_AVAILABLE when it cannot be
 *         changed now (it takes effect at the next start); #RC_P1_INVALID for a count it rejects
 */
VXMCD_API unsigned int SetNumberAccumulations(int count);
/**
 * Sets how many images a series has (acquisition mode 3).
 * @param count  1 or more; outside this mode SetAcquisitionMode() writes it to the camera
 * @return #RC_SUCCESS, also when it cannot be changed now and takes effect at the next start; #RC_NOT_SUPPORTED
 *         when the camera cannot count frames; #RC_P1_INVALID for a count it rejects
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
 * @return #RC_SUCCESS when the camera offers the mode, even if it refuses the change itself;
 *         #RC_INVALID_TRIGGER_MODE when the camera does not offer it now; #RC_P1_INVALID for any other mode;
 *         #RC_FEATURE_ERROR when the camera's name for the external mode cannot be read
 */
VXMCD_API unsigned int SetTriggerMode(int mode);
/**
 * Sends the command that triggers one exposure in trigger mode 10.
 * @return #RC_SUCCESS when the command was sent, even if the camera did not expose: only an image, or a wait that it
 *         ends, shows that it did; #RC_NOT_SUPPORTED when the camera has no software trigger
 */
VXMCD_API unsigned int SendSoftwareTrigger(void);
/**
 * Allows the next exposure to overlap the read-out of the one before.
 * @param on  0 off, 1 on
 * @return #RC_NOT_SUPPORTED without the feature; #RC_NOT_AVAILABLE when it cannot be read or changed now;
 *         #RC_P1_INVALID for any other value; else #RC_SUCCESS, also for every other refusal, such as that of a camera
 *         that was unplugged
 */
VXMCD_API unsigned int SetOverlapMode(int on);
/** The same as SetOverlapMode(), result codes included. */
VXMCD_API unsigned int SetFrameTransferMode(int on);
/**
 * Reports the times in force, in s. Values that the camera does not report are 0.01, 0.03 and 0.03; without a burst
 * rate the accumulate cycle equals the kinetic cycle.
 * @param exposure    written with the exposure time
 * @param accumulate  written with the accumulation cycle time
 * @param kinetic     written with the kinetic cycle time
 * @return #RC_SUCCESS
 */
VXMCD_API unsigned int GetAcquisitionTimings(float* exposure, float* accumulate, float* kinetic);
/**
 * Reports the time the sensor takes to be read out.
 * @param seconds  written with the time in s, or 0 when it cannot be read
 * @return #RC_SUCCESS; #RC_P1_INVALID for a null pointer or a failed read; #RC_NOT_SUPPORTED without the feature;
 *         #RC_NOT_AVAILABLE when it cannot be read now
 */
VXMCD_API unsigned int GetReadOutTime(float* seconds);
/**
 * Reports the longest exposure, rounded to `float`. Where that rounds up, SetExposureTime() refuses the value: the
 * next smaller `float` is the longest exposure that it takes.
 * @param seconds  written with the time in s, 0 when the read failed
 * @return #RC_SUCCESS; #RC_P1_INVALID when it cannot be read
 */
VXMCD_API unsigned int GetMaximumExposure(float* seconds);
/** @} */

/** @defgroup area Sensor and image area
 *  @{ */
/**
 * Reports the size of the sensor, which is the size of an image until an image area is set.
 * @param xpixels  written with the width in pixels; keeps its value when it cannot be read
 * @param ypixels  written with the height in pixels; keeps its value when it cannot be read
 * @return #RC_SUCCESS; #RC_P1_INVALID, #RC_P2_INVALID when width or height cannot be read
 */
VXMCD_API unsigned int GetDetector(int* xpixels, int* ypixels);
/**
 * Sets the image area and its binning. Pixels and rows count from 1, first and last included. The layout (see
 * SetReadMode()) stays as it is; the area is that of the image layout. A camera that can only bin in squares bins by
 * @p hbin in both directions, while the height is still counted with @p vbin: pass @p vbin equal to @p hbin there.
 *
 * Everything is written even when a part of it is rejected, so a failure leaves the parts that the camera took.
 * @param hbin    pixels added up in a row, 1 or more
 * @param vbin    rows added up, 1 or more
 * @param hstart  first pixel of the rows
 * @param hend    last pixel of the rows
 * @param vstart  first row
 * @param vend    last row
 * @return #RC_SUCCESS; #RC_P1_INVALID, #RC_P2_INVALID for a binning factor below 1, with nothing written; else the
 *         last of these that holds: #RC_P4_INVALID when the width, #RC_P3_INVALID when @p hstart, #RC_P5_INVALID
 *         when the height, #RC_P6_INVALID when @p vstart is out of range. No other refusal is reported: a binning
 *         factor that the camera does not have, and a call during a run, which changes nothing, are #RC_SUCCESS.
 */
VXMCD_API unsigned int SetImage(int hbin, int vbin, int hstart, int hend, int vstart, int vend);
/**
 * Sets the tracks of the track layout (see SetReadMode()): strips of rows over the whole width, each read out as
 * one row. Rows count from 1 at the end of the sensor where an image has its last row. The layout stays as it is.
 * @param numTracks  number of tracks, 1 or more
 * @param areas      2 x @p numTracks rows: first and last row of each track, both included
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED when the camera has no tracks; #RC_P1_INVALID when it rejects the number;
 *         #RC_P2_INVALID for a null pointer, or when it rejects a track; tracks are written from the last one of
 *         @p areas to the first, and those before the rejected one stay written
 */
VXMCD_API unsigned int SetRandomTracks(int numTracks, int* areas);
/**
 * Reports the largest binning factor.
 * @param readMode    not used
 * @param horzVert    0 horizontal, 1 vertical
 * @param maxBinning  written with the factor; 1 when it cannot be read
 * @return 0 for success, not #RC_SUCCESS; #RC_P2_INVALID for another @p horzVert; #RC_P3_INVALID for a
 *         null pointer; #RC_BINNING_QUERY_FAILED when the read fails
 */
VXMCD_API unsigned int GetMaximumBinning(int readMode, int horzVert, int* maxBinning);
/** @} */

/** @defgroup readout Readout channel
 *  How the sensor is read out, by index: AD channel (0 one amplifier, 1 both combined), amplifier (0 low gain, 1
 *  high gain), horizontal shift speed and pre-amplifier gain. A write that the camera refuses leaves its setting as
 *  it is and is not reported, unless a function says so.
 *
 *  These functions treat every camera as one with two amplifiers. They do not report whether the second exists, and
 *  choosing it on a camera without it changes nothing in the camera.
 *  @{ */
/**
 * Chooses the AD channel. Needs no open camera.
 * @param channel  0 to GetNumberADChannels() - 1
 * @return #RC_SUCCESS; #RC_P1_INVALID when there is no such channel
 */
VXMCD_API unsigned int SetADChannel(int channel);
/** Writes the number of AD channels, 1 or 2. Needs no open camera; without one it writes nothing. Returns
 *  #RC_SUCCESS. */
VXMCD_API unsigned int GetNumberADChannels(int* count);
/**
 * Reports the bits per pixel of an AD channel. Needs no open camera; without one it writes nothing.
 * @param channel  0 to GetNumberADChannels() - 1
 * @param depth    written with the number of bits; 0 when it cannot be read
 * @return #RC_SUCCESS; #RC_P2_INVALID for a null pointer; #RC_P1_INVALID when there is no such channel
 */
VXMCD_API unsigned int GetBitDepth(int channel, int* depth);
/**
 * Chooses the amplifier. While both are read (AD channel 1) the choice is stored and used later.
 * @param amplifier  0 or 1
 * @return #RC_SUCCESS, also when the camera has no such amplifier; #RC_P1_INVALID for any other value
 */
VXMCD_API unsigned int SetOutputAmplifier(int amplifier);
/** Writes 2 as the number of amplifiers, for every camera. Returns #RC_SUCCESS. */
VXMCD_API unsigned int GetNumberAmp(int* count);
/** #RC_SUCCESS for amplifier 0 or 1, whether or not the camera has it; #RC_INVALID_AMPLIFIER for any other. */
VXMCD_API unsigned int IsAmplifierAvailable(int amplifier);
/**
 * Copies the description of an amplifier: "Low Gain", "High Gain", or "Dual Gain" while both are read.
 * @param amplifier  0 or 1
 * @param text       at least @p length bytes. Its first @p length - 1 bytes are written, the rest of them with
 *                   zeros; a text that does not fit is cut there without a terminator
 * @param length     bytes of the buffer, 11 or more for every text; 0 or less writes nothing
 * @return #RC_SUCCESS; #RC_P1_INVALID for any other amplifier
 */
VXMCD_API unsigned int GetAmpDesc(int amplifier, char* text, int length);
/**
 * Reports the highest speed, which is the same for both amplifiers.
 * @param amplifier  0 or 1
 * @param megahertz  written with the speed in MHz; 0 when the camera has none
 * @return #RC_SUCCESS; #RC_P1_INVALID for any other amplifier
 */
VXMCD_API unsigned int GetAmpMaxSpeed(int amplifier, float* megahertz);
/**
 * Chooses the horizontal shift speed, and with it the amplifier.
 * @param amplifier  0 or 1
 * @param speed      0 to GetNumberHSSpeeds() - 1
 * @return #RC_SUCCESS; #RC_P1_INVALID, #RC_P2_INVALID when there is no such amplifier or speed
 */
VXMCD_API unsigned int SetHSSpeed(int amplifier, int speed);
/**
 * Counts the horizontal shift speeds, which are the same for every channel and amplifier.
 * @param channel    0 to GetNumberADChannels() - 1
 * @param amplifier  0 or 1
 * @param count      written with the number of speeds, 0 on every failure
 * @return #RC_SUCCESS; #RC_P1_INVALID, #RC_P2_INVALID when there is no such channel or amplifier
 */
VXMCD_API unsigned int GetNumberHSSpeeds(int channel, int amplifier, int* count);
/**
 * Reports a horizontal shift speed.
 * @param channel    0 to GetNumberADChannels() - 1
 * @param amplifier  0 or 1
 * @param speed      0 to GetNumberHSSpeeds() - 1
 * @param megahertz  written with the speed in MHz; 1.0 on every failure
 * @return #RC_SUCCESS; #RC_P1_INVALID, #RC_P2_INVALID, #RC_P3_INVALID when there is no such channel, amplifier or
 *         speed
 */
VXMCD_API unsigned int GetHSSpeed(int channel, int amplifier, int speed, float* megahertz);
/**
 * Chooses the pre-amplifier gain.
 * @param gain  0 to GetNumberPreAmpGains() - 1
 * @return #RC_SUCCESS; #RC_P1_INVALID when there is no such gain, which cameras with the simple gain control do
 *         not report
 */
VXMCD_API unsigned int SetPreAmpGain(int gain);
/** Writes the number of pre-amplifier gains; nothing when it cannot be read. Returns #RC_SUCCESS. */
VXMCD_API unsigned int GetNumberPreAmpGains(int* count);
/**
 * Reports the factor of a pre-amplifier gain.
 * @param gain   0 to GetNumberPreAmpGains() - 1
 * @param value  written with the factor, for the simple gain control 1, 2 or 3; 0 on every failure
 * @return #RC_SUCCESS; #RC_P1_INVALID when there is no such gain
 */
VXMCD_API unsigned int GetPreAmpGain(int gain, float* value);
/**
 * Reports whether a gain can be used with a channel, amplifier and speed.
 * @param channel    0 or 1
 * @param amplifier  0 or 1
 * @param speed      0 to 3
 * @param gain       0 to GetNumberPreAmpGains() - 1
 * @param status     written with 1 or 0; untouched on failure
 * @return #RC_SUCCESS; #RC_P1_INVALID, #RC_P2_INVALID, #RC_P3_INVALID, #RC_P4_INVALID when there is no such
 *         channel, amplifier, speed or gain, checked in this order; cameras without the simple gain control check
 *         the gain before the speed
 */
VXMCD_API unsigned int IsPreAmpGainAvailable(int channel, int amplifier, int speed, int gain, int* status);
/**
 * Copies the name of a pre-amplifier gain, without the part in brackets at its end.
 * @param gain    0 to GetNumberPreAmpGains() - 1
 * @param text    at least @p length bytes; always terminated; empty when the name has characters that the
 *                program's locale does not have
 * @param length  bytes of the buffer, 30 is enough; 0 or less writes nothing
 * @return #RC_SUCCESS; #RC_P1_INVALID when there is no such gain or, with the simple gain control, it cannot be
 *         read; #RC_P2_INVALID for a null pointer
 */
VXMCD_API unsigned int GetPreAmpGainText(int gain, char* text, int length);
/**
 * Switches the baseline clamp, which keeps the level of dark pixels constant.
 * @param state  0 off, 1 on
 * @return #RC_SUCCESS; #RC_P1_INVALID for any other state or when the camera rejects it; #RC_NOT_SUPPORTED without
 *         a clamp; #RC_NOT_AVAILABLE when it cannot be switched now
 */
VXMCD_API unsigned int SetBaselineClamp(int state);
/**
 * Reports the baseline clamp.
 * @param state  written with 0 or 1; untouched on failure
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without a clamp; #RC_NOT_AVAILABLE when it cannot be read now;
 *         #RC_P1_INVALID when the read fails
 */
VXMCD_API unsigned int GetBaselineClamp(int* state);
/**
 * Reports how full the camera's own memory is. Blocks while another thread is in ShutDown() of this camera; a thread without
 * its own current camera (vxmcd_SetCurrentCameraOfThread()) also while another such thread is in ShutDown() of any camera.
 * @param percent  written with the fill in per cent of the memory, which may exceed 100. It **keeps its value, with
 *                 success,** when gain, shutter mode or the fill itself cannot be read: set it to a value such as -1
 *                 before the call
 * @return #RC_SUCCESS; #RC_P1_INVALID for a null pointer; #RC_NOT_SUPPORTED when the kind of memory cannot be read
 */
VXMCD_API unsigned int GetFIFOUsage(int* percent);
/** @} */

/** @defgroup temperature Cooling and temperature
 *  Temperatures are degrees Celsius (C).
 *  @{ */
/**
 * Sets the target temperature of the cooler. Does not switch the cooler on.
 * @param degrees  target in C, within GetTemperatureRange()
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without a settable temperature; #RC_NOT_AVAILABLE when the camera
 *         answers that the feature is not readable; #RC_P1_INVALID when it rejects the value in any other way
 */
VXMCD_API unsigned int SetTemperature(int degrees);
/** Switches the cooler on. Returns #RC_SUCCESS, even if the camera refuses; ask IsCoolerOn(). */
VXMCD_API unsigned int CoolerON(void);
/** Switches the cooler off. Returns #RC_SUCCESS, even if the camera refuses; ask IsCoolerOn(). */
VXMCD_API unsigned int CoolerOFF(void);
/**
 * Reports whether the cooler is switched on.
 * @param on  written with 0 or 1; keeps its value when the read fails, which is success
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without a cooler; #RC_P1_INVALID for a null pointer
 */
VXMCD_API unsigned int IsCoolerOn(int* on);
/**
 * Reports the temperature of the sensor, and by the result code the state of the cooling.
 * @param degrees  written with the temperature in C; untouched when it cannot be read
 * @return #RC_TEMP_OFF, #RC_TEMP_STABILIZED, #RC_TEMP_NOT_REACHED, #RC_TEMP_DRIFT or #RC_TEMP_NOT_STABILIZED;
 *         #RC_SUCCESS when the temperature is known but not the state; #RC_P1_INVALID for a null pointer, also
 *         with no open camera; #RC_NOT_SUPPORTED without a thermometer; #RC_FEATURE_ERROR when it cannot be read
 */
VXMCD_API unsigned int GetTemperatureF(float* degrees);
/**
 * As GetTemperatureF(), in whole degrees: the fraction is dropped, so -69.7 gives -69.
 * @param degrees  written with the temperature in C, -999 when it cannot be read
 */
VXMCD_API unsigned int GetTemperature(int* degrees);
/**
 * Reports the range of SetTemperature(), in whole degrees: fractions are dropped.
 * @param minimum  written with the lowest target in C; 0 when it cannot be read
 * @param maximum  written with the highest target in C; 0 when it cannot be read
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without a settable temperature
 */
VXMCD_API unsigned int GetTemperatureRange(int* minimum, int* maximum);
/**
 * Reports temperature and target at once. Values that cannot be read are 0.
 * @param sensor  written with the sensor's temperature in C
 * @param target  written with the target in C
 * @param third   written with 0
 * @param fourth  written with 0
 * @return #RC_SUCCESS
 */
VXMCD_API unsigned int GetTemperatureStatus(float* sensor, float* target, float* third, float* fourth);
/**
 * Sets the fan.
 * @param mode  0 full, 1 low, 2 off
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without a settable fan; #RC_P1_INVALID for any other mode or when the
 *         camera does not offer it
 */
VXMCD_API unsigned int SetFanMode(int mode);
/** @} */

/** @defgroup description What the camera is
 *  @{ */
/** @name Bits of vxmcd_Capabilities::acquisitionModes
 *  @{ */
#define VXMCD_ACQUISITION_SINGLE 1u   /**< single images; always set */
#define VXMCD_ACQUISITION_SERIES 8u   /**< series of a given number of images ("FrameCount") */
#define VXMCD_ACQUISITION_OVERLAP 64u /**< exposure during read-out ("Overlap") */
/** @} */
/** @name Bits of vxmcd_Capabilities::readModes
 *  @{ */
#define VXMCD_READ_FULL_IMAGE 1u /**< the whole sensor; always set */
#define VXMCD_READ_SUB_IMAGE 2u  /**< a part of it ("AOILeft") */
#define VXMCD_READ_TRACKS 32u    /**< tracks ("AOILayout") */
/** @} */
/** @name Bits of vxmcd_Capabilities::triggerModes
 *  @{ */
#define VXMCD_TRIGGER_INTERNAL 1u           /**< SetTriggerMode() 0; also set on a camera without triggers */
#define VXMCD_TRIGGER_EXTERNAL 2u           /**< SetTriggerMode() 1 */
#define VXMCD_TRIGGER_SOFTWARE 8u           /**< SetTriggerMode() 10 */
#define VXMCD_TRIGGER_EXTERNAL_START 16u    /**< SetTriggerMode() 6 */
#define VXMCD_TRIGGER_EXTERNAL_EXPOSURE 32u /**< SetTriggerMode() 7 */
/** @} */
/** @name Values of vxmcd_Capabilities::cameraType
 *  @{ */
#define VXMCD_CAMERA_TRELLIS 19u /**< the model "TRELLIS CMOS" */
#define VXMCD_CAMERA_OTHER 20u   /**< any other */
#define VXMCD_CAMERA_RQ512 21u   /**< the model "RQ512_LX" */
#define VXMCD_CAMERA_KESTRA 22u  /**< hardware of the type "KESTRA" */
/** @} */
/** @name Bits of vxmcd_Capabilities::settableFunctions
 *  @{ */
#define VXMCD_SET_READOUT_RATE 2u /**< SetHSSpeed() ("PixelReadoutRate") */
#define VXMCD_SET_TEMPERATURE 4u  /**< SetTemperature(), at the moment ("TargetSensorTemperature" is writable) */
#define VXMCD_SET_BASELINE_CLAMP 32u  /**< SetBaselineClamp() ("BaselineClamp") */
#define VXMCD_SET_PRE_AMP_GAIN 0x200u /**< SetPreAmpGain() with directly set gains ("PreAmpGain") */
#define VXMCD_SET_BINNING 0x1000u     /**< binning in SetImage() ("AOIHBin" or "AOIBinning") */
#define VXMCD_SET_TRACKS 0x4000u      /**< SetRandomTracks() ("AOILayout") */
#define VXMCD_SET_ALWAYS 0x1000000u   /**< always set */
/** @} */
/** @name Bits of vxmcd_Capabilities::readableFunctions
 *  @{ */
#define VXMCD_GET_TEMPERATURE 1u /**< GetTemperatureF() ("SensorTemperature") */
#define VXMCD_GET_ALWAYS 8u      /**< always set */
/** @} */
/** @name Bits of vxmcd_Capabilities::features
 *  @{ */
#define VXMCD_FEATURES_ALWAYS 3u                      /**< two bits that are always set */
#define VXMCD_FEATURE_FAN 128u                        /**< SetFanMode() ("FanSpeed") */
#define VXMCD_FEATURE_FAN_LOW 0x100u                  /**< SetFanMode() 1 ("FanSpeed" has "Low") */
#define VXMCD_FEATURE_METADATA 0x8000u                /**< SetMetaData() ("MetadataEnable") */
#define VXMCD_FEATURE_EXPOSURE_START_EVENT 0x2000000u /**< the camera signals the start of an exposure */
#define VXMCD_FEATURE_EXPOSURE_END_EVENT 0x4000000u   /**< the camera signals the end of an exposure */
/** @} */
/** What a camera can do: twelve 32-bit words. */
typedef struct vxmcd_Capabilities
{
  unsigned int size;              /**< bytes of the record, 48 for all of it; set by the caller */
  unsigned int acquisitionModes;  /**< `VXMCD_ACQUISITION_` bits */
  unsigned int readModes;         /**< `VXMCD_READ_` bits */
  unsigned int triggerModes;      /**< `VXMCD_TRIGGER_` bits */
  unsigned int cameraType;        /**< a `VXMCD_CAMERA_` value */
  unsigned int pixelMode;         /**< 4 */
  unsigned int settableFunctions; /**< `VXMCD_SET_` bits */
  unsigned int readableFunctions; /**< `VXMCD_GET_` bits */
  unsigned int features;          /**< `VXMCD_FEATURE_` bits */
  unsigned int reserved1;         /**< 0 */
  unsigned int reserved2;         /**< 0 */
  unsigned int reserved3;         /**< 0 */
} vxmcd_Capabilities;
/**
 * Reports what the camera can do.
 * @param capabilities  its `size` is set by the caller; only whole words within that size are written
 * @return #RC_SUCCESS; #RC_P1_INVALID for a null pointer, also with no open camera
 */
VXMCD_API unsigned int GetCapabilities(vxmcd_Capabilities* capabilities);
/**
 * Reports the camera's firmware from its version text, "year.month.day.build"; all values are 0 when the text cannot
 * be read. A number that is missing counts as 0, so a text without numbers gives the date 20000000 and build 0.
 * @param out1           written with 0
 * @param out2           written with 0
 * @param out3           written with 0
 * @param out4           written with 0
 * @param firmwareDate   written with the date, year x 10000 + month x 100 + day; the two-digit year of the text
 *                       stands for 1990 to 2089
 * @param firmwareBuild  written with the build number
 * @return #RC_SUCCESS; #RC_P1_INVALID to #RC_P4_INVALID, #RC_P5_INVALID, #RC_P6_INVALID for a null pointer, with
 *         nothing written
 */
VXMCD_API unsigned int GetHardwareVersion(unsigned int* out1, unsigned int* out2, unsigned int* out3,
                                          unsigned int* out4, unsigned int* firmwareDate,
                                          unsigned int* firmwareBuild);
#ifndef VXMCD_BUILDING
/**
 * Finds the first number in a text: "SN-01234X" gives 1234. Needs no open camera.
 * @param text    a terminated text
 * @param number  written with the number, or with the largest `int` when it is larger; untouched when there is no
 *                digit
 */
VXMCD_API void extractNumberFromString(wchar_t* text, int* number);
#endif
/**
 * Reports the number in the camera's serial number: "VSC-00512" gives 512.
 * @param number  written with the number; 0 when there is none or it cannot be read
 * @return #RC_SUCCESS; #RC_P1_INVALID for a null pointer
 */
VXMCD_API unsigned int GetCameraSerialNumber(int* number);
/**
 * Copies the camera's model.
 * @param name  room for 4096 bytes; written with the model in the program's locale, empty when it cannot be read
 * @return #RC_SUCCESS; #RC_P1_INVALID for a null pointer
 */
VXMCD_API unsigned int GetHeadModel(char* name);
/**
 * Reports the size of a pixel of the sensor.
 * @param width   written with the width in micrometres; 10 on failure
 * @param height  written with the height in micrometres; 10 on failure
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED when the camera does not have it; #RC_P1_INVALID, #RC_P2_INVALID when
 *         width or height cannot be read
 */
VXMCD_API unsigned int GetPixelSize(float* width, float* height);
/** Writes an empty text: there is no controller card. Needs no open camera. Returns #RC_SUCCESS. */
VXMCD_API unsigned int GetControllerCardModel(char* name);
/** @} */

/** @defgroup i2c I2C
 *  Devices on the camera's controller bus. Both functions block until the camera has made the transfer. Use them from
 *  one thread at a time: a transfer is prepared in the camera in several steps.
 *
 *  Addresses are in 7-bit form, 0x08 to 0x77, without the bit that distinguishes a read from a write: a device whose
 *  data sheet says 0xA0 and 0xA1 has address 0x50. Only the low 32 bits of `count` are used.
 *  @{ */
/**
 * Reads bytes from a device.
 * @param address  the device's address in 7-bit form
 * @param count    number of bytes; the camera has a limit
 * @param data     room for @p count bytes; bytes that could not be read keep their value
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED when the camera cannot read from the bus; #RC_P1_INVALID when it refuses
 *         the address, #RC_P2_INVALID when it refuses the count; #RC_I2C_ERROR when the transfer failed, a byte
 *         could not be read or @p data is null
 */
VXMCD_DECORATED unsigned int I2CBurstRead(unsigned char address, long count, unsigned char* data);
/**
 * Writes bytes to a device. Nothing is sent unless the camera has accepted all of them.
 * @param address  the device's address in 7-bit form
 * @param count    number of bytes; the camera has a limit
 * @param data     @p count bytes
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED when the camera cannot write to the bus; #RC_P1_INVALID when it refuses
 *         the address, #RC_P2_INVALID when it refuses the count; #RC_I2C_ERROR when the transfer failed, a byte
 *         was refused or @p data is null
 */
VXMCD_DECORATED unsigned int I2CBurstWrite(unsigned char address, long count, unsigned char* data);
/** @} */

/** @defgroup pots Potentiometers
 *  Digital potentiometers on the camera's internal bus set its analogue levels. A *potentiometer file* describes them
 *  in named groups (docs/file-formats.md); groups, and potentiometers in a group, are numbered from 0. The description
 *  belongs to the open camera: it is empty after Initialize() and gone after ShutDown().
 *
 *  The functions that read or set one value return a status instead of a result code: **0 for success, 1 for a group or
 *  potentiometer that does not exist** (nothing is read, written or sent then), besides #RC_NOT_INITIALIZED. A transfer
 *  that the camera refuses is not an error: it is only in the diagnostic log, and a value that cannot be read is 0.
 *
 *  Calls from several threads wait for one another. Observers are called on the thread that made the change, before
 *  its call returns, and may call any function of this section for the same camera. They must not call ShutDown(),
 *  which waits for the call that they are part of, nor GetFIFOUsage(), which waits for ShutDown(), nor a function that
 *  changes another camera's potentiometers. What an observer throws reaches the caller of the function.
 *  @{ */
/**
 * Loads a potentiometer file in place of the one before and notifies the observers. A failure leaves no groups; the
 * observers are notified then, too. **The last section of the file is not a group**: a file with one section cannot be
 * loaded. Current values are unknown (-1) afterwards. A file is refused when a group has more than 4096
 * potentiometers, or when reading it would take too long: about 350 potentiometers with all their keys are the most.
 * Blocks while the file is read, up to about a second, and as long as the observers take.
 * @param fileName  the file's name, at best with its path
 * @return #RC_SUCCESS; #RC_FILE_LOAD_ERROR when the file does not exist, has no group, or is refused
 */
VXMCD_API unsigned int vxsys_CameraPotsLoadFile(const char* fileName);
/**
 * Writes the names of the groups into a file and reads the value of every potentiometer from the camera. **The file
 * does not contain the potentiometers, and an existing file is replaced**: do not give it the name of a file that was
 * loaded. Blocks, as I2CBurstRead() does, until the camera has made a transfer for each potentiometer.
 * @param fileName  the file's name
 * @return #RC_SUCCESS, also when the file cannot be written, which is logged
 */
VXMCD_API unsigned int vxsys_CameraPotsSaveFile(const char* fileName);
/**
 * Sets every potentiometer to its default in the file, as vxsys_CameraPotsSetPotValue() does, group by group. Blocks
 * for 50 ms for each of them. Ends early when an observer loads another file.
 * @return #RC_SUCCESS, also with no file loaded
 */
VXMCD_API unsigned int vxsys_CameraPotsCommitValuesFromFile(void);
/** Writes the number of groups, 0 with no file loaded. Returns 0, or #RC_NOT_INITIALIZED. */
VXMCD_API unsigned int vxsys_CameraPotsGetNumberGroups(int* count);
/**
 * Copies the name of a group.
 * @param group  0 to count - 1
 * @param name   room for 256 characters, of which as many are written as the name has, and a terminator
 * @return 0; 1 when there is no such group; #RC_NOT_INITIALIZED
 */
VXMCD_API unsigned int vxsys_CameraPotsGetGroupName(int group, char* name);
/**
 * Writes the number of potentiometers of a group.
 * @param group  0 to count - 1
 * @param count  written unless the group does not exist
 * @return 0; 1 when there is no such group; #RC_NOT_INITIALIZED
 */
VXMCD_API unsigned int vxsys_CameraPotsGetNumberPotsInGroup(int group, int* count);
/**
 * Writes one property of a potentiometer as the file gives it. Nothing is read from the camera.
 *
 * | infoType | written to out | type |
 * |---|---|---|
 * | 0 | name, with a terminator | room for 256 characters |
 * | 1 | I2C address | 32-bit integer |
 * | 2 | register in the device | 32-bit integer |
 * | 3, 4 | maximum, minimum of the quantity that it sets | float |
 * | 5 | value last read from the device, -1 when it is unknown | 32-bit integer |
 * | 6 | nothing | |
 * | 7, 8 | minimum, maximum allowed value; not enforced here | 32-bit integer |
 * | 9, 10 | maximum, minimum of the rail's voltage | float |
 * | 11 | 1 when it has a rail that can be read, 0 otherwise | 32-bit integer |
 *
 * @param group     0 to the number of groups - 1
 * @param pot       0 to the number of potentiometers in the group - 1
 * @param infoType  which property
 * @param out       as the table says; other types write nothing
 * @return 0; 1 when there is no such potentiometer; #RC_NOT_INITIALIZED
 */
VXMCD_API unsigned int vxsys_CameraPotsGetPotInfo(int group, int pot, int infoType, void* out);
/**
 * Reads the value of a potentiometer from the camera and stores it as the current one. Blocks, as I2CBurstRead() does,
 * until the camera has made the transfer.
 * @param group  0 to the number of groups - 1
 * @param pot    0 to the number of potentiometers in the group - 1
 * @param value  written with 0 to 255; 0 when it cannot be read
 * @return 0; 1 when there is no such potentiometer; #RC_NOT_INITIALIZED
 */
VXMCD_API unsigned int vxsys_CameraPotsGetPotValue(int group, int pot, int* value);
/**
 * Sets a potentiometer and, unless that is switched off, also its power-on value, and notifies the observers. Blocks
 * for 50 ms, in which the device settles, and as long as the observers take. The current value is not changed until
 * it is read.
 * @param group  0 to the number of groups - 1
 * @param pot    0 to the number of potentiometers in the group - 1
 * @param value  the low 8 bits are sent; the caller has to respect the allowed values
 * @return 0; 1 when there is no such potentiometer; #RC_NOT_INITIALIZED
 */
VXMCD_API unsigned int vxsys_CameraPotsSetPotValue(int group, int pot, int value);
/**
 * Reads the monitor of the voltage rail that a potentiometer sets. Blocks, as I2CBurstRead() does, until the camera
 * has made the transfer.
 * @param group  0 to the number of groups - 1
 * @param pot    0 to the number of potentiometers in the group - 1
 * @param value  written with 0 to 255; 0 when there is no rail or it cannot be read
 * @return 0; 1 when there is no such potentiometer; #RC_NOT_INITIALIZED
 */
VXMCD_API unsigned int vxsys_CameraPotsGetRailValue(int group, int pot, int* value);
/**
 * Chooses whether values that are set become power-on values too, as they do at first. Switching it on sets every
 * potentiometer whose current value is known to that value, which blocks for 50 ms each.
 * @param enable  1 or more for on, anything else for off
 * @return 0, or #RC_NOT_INITIALIZED
 */
VXMCD_API unsigned int vxsys_CameraPotsSetPotDefaultEnable(int enable);
/** Writes 1 when values that are set become power-on values too, 0 otherwise. Returns 0, or #RC_NOT_INITIALIZED. */
VXMCD_API unsigned int vxsys_CameraPotsGetPotDefaultEnable(int* enable);
/** A function that is called after a change, with the context that it was registered with. Its result is ignored. */
typedef unsigned int (*vxmcd_PotsObserver)(void* context);
/**
 * Registers a function that is called at the end of every load and every setting of a potentiometer. The first 64
 * registrations are called, in their order; later ones are never called. A context may be registered more
 * than once. ShutDown() removes all registrations.
 * @param callback  the function; null for none
 * @param context   passed to it; belongs to the caller
 * @return #RC_SUCCESS
 */
VXMCD_API unsigned int vxsys_CameraPotsRegisterObserver(vxmcd_PotsObserver callback, void* context);
/**
 * Removes every registration with this context. None of its functions is called any more afterwards.
 * @return #RC_SUCCESS, also when there was none
 */
VXMCD_API unsigned int vxsys_CameraPotsUnregisterObserver(void* context);
/** @} */

/** @defgroup eeprom EEPROM
 *  A *configuration library*, libvxconf_regcam.so, reads, stores and interprets the contents of the camera's EEPROM.
 *  Initialize() loads it from the working directory or the system's library path (vxmcd_plugins.h). It decides what the
 *  contents and the files are, and how long a call blocks. The contents are read from the camera once, by the first of
 *  these functions that needs them. Calls from several threads wait for one another.
 *  @{ */
/**
 * Reads the contents from the camera, also when they have been read before.
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without a configuration library; #RC_FEATURE_ERROR when it fails
 */
VXMCD_API unsigned int vxsys_EEPUP(void);
/**
 * Writes the version of the contents.
 * @param first    written with 0
 * @param version  written with the version
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without a configuration library; #RC_FEATURE_ERROR when the contents cannot
 *         be read. Nothing is written on failure.
 */
VXMCD_API unsigned int vxsys_EEPVR(int* first, int* version);
/**
 * Stores the contents in the camera.
 * @return #RC_SUCCESS; #RC_FEATURE_ERROR without a configuration library or when it fails
 */
VXMCD_API unsigned int vxsys_EEPFL(void);
/**
 * Takes the contents from a file. The camera keeps its own until vxsys_EEPFL().
 * @param fileName  passed to the configuration library unchanged
 * @return #RC_SUCCESS; #RC_FEATURE_ERROR without a configuration library or when it fails
 */
VXMCD_API unsigned int vxsys_EEPLD(const char* fileName);
/**
 * Writes the contents to a file.
 * @param fileName  passed to the configuration library unchanged
 * @return #RC_SUCCESS; #RC_FEATURE_ERROR without a configuration library or when it fails
 */
VXMCD_API unsigned int vxsys_EEPSV(const char* fileName);
/**
 * Takes the contents from a file and stores them in the camera, without reading those first.
 * @param fileName  passed to the configuration library unchanged
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without a configuration library; #RC_FEATURE_ERROR when either fails
 */
VXMCD_API unsigned int LoadEEPROM(const char* fileName);
/** @} */

/** @defgroup triggerboard Trigger board
 *  A trigger board is driven by a library, the file usbi2c.dll in the working directory, which the first Initialize()
 *  loads and the ShutDown() of the last camera unloads (vxmcd_plugins.h). One board serves all cameras. No
 *  function here needs an open camera.
 *
 *  Except for TriggerBoard_I2CWrite(), these functions return **the status of that library**, whose meaning the library
 *  defines; **1 when there is no such library**; and #RC_SUCCESS, doing nothing, before the first Initialize(). The
 *  library decides how long they block. They may be called from any thread.
 *  @{ */
/** Gets the board ready. */
VXMCD_API unsigned int TriggerBoard_Initialize(void);
/** Releases the board. */
VXMCD_API unsigned int TriggerBoard_ShutDown(void);
/** Writes the number of triggers, if the library does. */
VXMCD_API unsigned int TriggerBoard_GetAvailableTriggers(int* count);
/** Writes the handle of the trigger with this index, if the library does. */
VXMCD_API unsigned int TriggerBoard_GetTriggerHandle(int index, int* handle);
/** Chooses a trigger by its index. */
VXMCD_API unsigned int TriggerBoard_SetCurrentTrigger(int index);
/** Sends the low byte of each argument to the board. Returns #RC_SUCCESS, even if that fails. */
VXMCD_API unsigned int TriggerBoard_I2CWrite(int first, int second, int third);
/** @} */

/** @defgroup service Service
 *  Values for maintenance tools. All functions but vxsys_GetBaselineLevel() answer the same for every camera. No
 *  function here needs an open camera unless it says so. Callable from any thread.
 *  @{ */
/**
 * Reads the level of a pixel without signal. Needs an open camera.
 * @param level  written with the level in counts; untouched on failure
 * @return #RC_SUCCESS; #RC_P1_INVALID when it cannot be read
 */
VXMCD_API unsigned int vxsys_GetBaselineLevel(int* level);
/** Writes 0.001 (s). Returns #RC_SUCCESS. */
VXMCD_API unsigned int vxsys_GetKeepCleanTime(float* seconds);
/** Writes 2.5 (degrees Celsius). Returns #RC_SUCCESS. */
VXMCD_API unsigned int vxsys_GetTemperatureTolerance(float* celsius);
/** Writes 1000 to each output. Returns #RC_SUCCESS. */
VXMCD_API unsigned int vxsys_GetHSSpeedLimits(float* first, float* second, float* third);
/** Writes 0 to each output. Returns #RC_SUCCESS. */
VXMCD_API unsigned int vxsys_GetDummyPixels(int* first, int* second, int* third, int* fourth);
/** Writes 1. Returns #RC_SUCCESS. */
VXMCD_API unsigned int vxsys_GetMinimumNumberInSeries(int* number);
/** Writes 1. Returns #RC_SUCCESS. */
VXMCD_API unsigned int vxsys_IsVacuumCooling(int* isVacuum);
/** Writes 1. Returns #RC_SUCCESS; #RC_P1_INVALID for a null pointer. */
VXMCD_API unsigned int vxsys_IsTemperatureAvailableDuringAcquisition(int* isAvailable);
/** Writes 1 (Hz) to both outputs. Returns #RC_NOT_SUPPORTED: there is no gate pulse generator. */
VXMCD_API unsigned int vxsys_GetDDGIOCFrequencyRange(double* minimum, double* maximum);
/** @} */

/** @defgroup acquisition Acquisition
 *  A run fills a ring of frame buffers. In a finite run the ring has a buffer for every image; in other runs it has at
 *  most 300,000,000 bytes (see GetSizeOfCircularBuffer()), and a run until abort overwrites the oldest images.
 *  vxmcd_GetIntactImage16() and its forms check whether an image was overwritten while it was copied; the other
 *  functions copy what is there.
 *  @{ */
/**
 * Starts a run with the present settings, and stops an earlier one first. Images of the earlier run are gone from
 * memory. Blocks until the run has begun (usually well under 1 ms; up to 10 s when an earlier run has to be stopped
 * first). An earlier series that is written to disk (see SetSpool()) and whose images have all been delivered is
 * finished instead, for as long as the disk makes progress; AbortAcquisition() from another thread then ends the start,
 * and the series continues to its end.
 * @return #RC_SUCCESS; #RC_FRAME_UNAVAILABLE when the camera refuses, the earlier run does not end, or there is not
 *         enough memory: for all images of a finite run that is not written to disk, and for two images in other runs.
 *         For a run that is independent (vxmcd_SetIndependentCameras(), vxmcd_SetCurrentCameraOfThread()) also when the
 *         memory of all cameras together would exceed three quarters of the machine's or of its control group's limit;
 *         #RC_START_REFUSED when the camera refuses a mode or count that could not be written earlier, or it still
 *         cannot be written because the earlier run has not ended, and after an internal failure; #RC_FEATURE_ERROR,
 *         #RC_ACQUIRING are reserved
 */
VXMCD_API unsigned int StartAcquisition(void);
/**
 * Stops the run; images so far stay available. Blocks until the run has ended (10 s at most). It does not end waits:
 * call CancelWait() for that. In a run that is written to disk with method 1 (see SetSpool()), images that are not
 * written yet are dropped, though they were delivered and counted; with method 3 all of them are written.
 * @return #RC_SUCCESS; #RC_IDLE when the camera is not acquiring; #RC_FEATURE_ERROR when the camera refuses to
 *         stop
 */
VXMCD_API unsigned int AbortAcquisition(void);
/**
 * Waits without limit for the next image since the last wait. Blocks. An image, a failure of the run or
 * CancelWait() ends the wait; each image ends one wait, and images that arrive while no thread waits end the next
 * wait at once. After the last image of a run nothing ends a wait: prefer the forms with a time-out, and ask
 * GetStatus().
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
/**
 * Writes the memory budget of the ring, 300,000,000 bytes; it is not a number of images. Frames above 100,000,000 bytes
 * get a ring of three buffers, or of two where memory is short, even above the budget.
 * @return #RC_SUCCESS
 */
VXMCD_DECORATED unsigned int GetSizeOfCircularBuffer(long* size);
/**
 * Frees the ring and every image in it; during a run, as soon as the run has ended. Needs no open camera.
 * @return #RC_SUCCESS
 */
VXMCD_API unsigned int FreeInternalMemory(void);
/** Does nothing; kept for programs that call it. Needs no open camera. Returns #RC_SUCCESS. */
VXMCD_API unsigned int createAcquisitionEvents(void);
/** @} */

/** @defgroup spooling Writing to disk
 *  Finite runs can be written to a directory frame by frame, as the camera delivers them, while they go on; the format
 *  is that of docs/file-formats.md. A series may be longer than the ring: the buffer of a frame is used again once the
 *  frame has been copied from it, and until then the image can also be retrieved. Runs until abort are not written.
 *
 *  When the disk is slower than the camera, frames wait in the ring and then in the camera, and when both are full the
 *  run ends with #RC_STATUS_HARDWARE_OVERFLOW. When frames cannot be written (disk full, files or directory removed,
 *  limit of the process for the size of files) it ends with #RC_STATUS_SPOOL_ISSUE. In either case the frames written
 *  before stay, on a full disk all that fit, and the description in the directory counts those that are known to be on
 *  the disk. A power failure costs the images of about the last two seconds. GetStatus() reports a failure at once,
 *  while the directory is complete only when the "State" in its description is no longer "recording".
 *  @{ */
/**
 * Switches writing on or off, from the next start on. StartAcquisition() makes the directory, with its parents. A
 * directory has one run: a new run replaces the files of the one before as soon as the camera has started it, and a
 * start that is refused leaves them as they are. Removing takes about 0.1 ms for each file, while the camera already
 * runs. GetStatus() reports a problem with the directory after the first frame, or after 100 ms without one. Does not
 * block.
 * @param active  1 on; any other value off
 * @param method  1 one image in each file; AbortAcquisition() drops images that are not written yet. 3 many images
 *                in each file of up to about 256 MiB; an abort writes every delivered image
 * @param path    the directory, absolute or relative to the working directory at the next start; copied. Null is
 *                allowed unless @p active is 1
 * @return #RC_SUCCESS; #RC_P2_INVALID for another method; #RC_P3_INVALID for a null path with @p active 1;
 *         #RC_NOT_INITIALIZED, in this order
 */
VXMCD_API unsigned int SetSpool(int active, int method, char* path);
/**
 * Sets how many threads write images, from the next start on; the default is 2. More threads help where a disk takes
 * several writes at once. Does not block.
 * @param count  1 or more; 256 at most are used
 * @return #RC_SUCCESS; #RC_P1_INVALID for a count below 1, also with no camera; #RC_NOT_INITIALIZED
 */
VXMCD_API unsigned int SetSpoolThreadCount(int count);
/**
 * Reports how much room a run that is written to disk needs with the present settings, and how much there is. A run
 * that needs more can be started nevertheless: it ends with #RC_STATUS_SPOOL_ISSUE when the disk is full, and the
 * images that fitted stay. Takes a few microseconds for each file of an earlier run in the directory.
 * @param neededBytes  written with the bytes on the disk for all images of the series, their index and description;
 *                     what the file system needs for the names of files comes on top
 * @param freeBytes    written with the bytes that are free where the directory of SetSpool() is or will be made; an
 *                     earlier run in it counts as free, since the start removes it
 * @return #RC_SUCCESS; #RC_NOT_AVAILABLE when writing is off, the run goes on until abort, or the camera or the file
 *         system does not report its size; #RC_NOT_INITIALIZED
 */
VXMCD_API unsigned int vxmcd_GetSpoolSpace(unsigned long long* neededBytes, unsigned long long* freeBytes);
/** @} */

/** @defgroup metadata Metadata
 *  @{ */
/**
 * Switches the timestamp that the camera adds to each frame, from the next start on. Initialize() switches it on.
 * @param enable  0 off, 1 on
 * @return #RC_NOT_SUPPORTED without the feature; #RC_NOT_AVAILABLE when it cannot be read or changed now;
 *         #RC_P1_INVALID for any other value; else #RC_SUCCESS, also for every other refusal, such as that of a camera
 *         that was unplugged
 */
VXMCD_API unsigned int SetMetaData(int enable);
/**
 * Reads the camera's clock value of an image of the present or last run. The newest 1,000,000 values are stored.
 * @param timestampCount  written with the number of timestamps of the run
 * @param ticks           written with the camera's tick count; it restarts at 0 with each run
 * @param index           image index from 0, counted in exposures: it is divided by the number of accumulations
 * @return #RC_SUCCESS; #RC_NOT_SUPPORTED without metadata; #RC_NOT_AVAILABLE when it was off at the last start;
 *         #RC_FEATURE_ERROR when the index is not available or the accumulations cannot be read
 */
VXMCD_API unsigned int vxsys_GetRawMetaDataInfo(unsigned int* timestampCount, long long* ticks,
                                                unsigned int index);
/** @} */

/** @defgroup retrieval Taking images
 *  Image arrays are dense: row r starts at pixel r x width, where width and height are those of the image area. `size`
 *  counts pixels and must equal width x height of one image. The functions ending in 8 deliver 8-bit pixels and need
 *  the camera's encoding "Mono8"; those ending in 16 deliver 16-bit pixels (of a 32-bit encoding the low 16 bits);
 *  those without a suffix deliver 32-bit pixels. All of them copy and convert on the calling thread and do not wait for
 *  an image.
 *
 *  An image that is gone, or whose run had another image area than now, is not copied. Where a function has no code
 *  for that, it answers #RC_SUCCESS and leaves the array as it is: GetOldestImage*() when the image is overwritten
 *  during the call, every function when the image area was changed after the run, and both after FreeInternalMemory().
 *
 *  After 2,147,483,647 images of one run, GetOldestImage*() answers #RC_NO_NEW_DATA and GetNumberAvailableImages()
 *  reports that number; all other functions continue with the true numbers.
 *
 *  Codes common to all: #RC_NOT_INITIALIZED; #RC_NOT_SUPPORTED when the encoding cannot be read or converted.
 *  @{ */
/**
 * Copies every image of the finished run: image n to place n - 1. Places of images that a run until abort has
 * overwritten are left as they are; after such a run use GetOldestImage() or GetImages(). Blocks for up to
 * 1 s when the last image has just arrived and the run is about to end.
 * @param array  room for @p size pixels times GetTotalNumberImagesAcquired()
 * @param size   pixels of one image
 * @return #RC_SUCCESS; #RC_ACQUIRING while the run goes on, or when another thread has started the next one before
 *         all images were copied; #RC_P1_INVALID for a null array; #RC_P2_INVALID for another size; #RC_NO_NEW_DATA
 *         when there is no image
 */
VXMCD_DECORATED unsigned int GetAcquiredData8(unsigned char* array, unsigned long size);
/** @copydoc GetAcquiredData8 */
VXMCD_DECORATED unsigned int GetAcquiredData16(unsigned short* array, unsigned long size);
/** @copydoc GetAcquiredData8 */
VXMCD_DECORATED unsigned int GetAcquiredData(int* array, unsigned long size);
/**
 * Copies the image after the one that the last call of these functions copied. Images that were overwritten meanwhile
 * are skipped; compare GetTotalNumberImagesAcquired() with the number of your calls to find out. A start begins again
 * at image 1.
 * @param array  room for @p size pixels
 * @param size   pixels of one image
 * @return #RC_SUCCESS; #RC_P1_INVALID for a null array; #RC_P2_INVALID for another size; #RC_NO_NEW_DATA when
 *         every image has been copied
 */
VXMCD_DECORATED unsigned int GetOldestImage8(unsigned char* array, unsigned long size);
/** @copydoc GetOldestImage8 */
VXMCD_DECORATED unsigned int GetOldestImage16(unsigned short* array, unsigned long size);
/** @copydoc GetOldestImage8 */
VXMCD_DECORATED unsigned int GetOldestImage(int* array, unsigned long size);
/**
 * Copies the newest image. Does not affect GetOldestImage().
 * @param array  room for @p size pixels
 * @param size   pixels of one image
 * @return #RC_SUCCESS; #RC_P1_INVALID for a null array; #RC_P2_INVALID for another size; #RC_NO_NEW_DATA before
 *         the first image; #RC_FRAME_UNAVAILABLE when it is gone
 */
VXMCD_DECORATED unsigned int GetMostRecentImage8(unsigned char* array, unsigned long size);
/** @copydoc GetMostRecentImage8 */
VXMCD_DECORATED unsigned int GetMostRecentImage16(unsigned short* array, unsigned long size);
/** @copydoc GetMostRecentImage8 */
VXMCD_DECORATED unsigned int GetMostRecentImage(int* array, unsigned long size);
/**
 * Copies the first image that is still there of the range @p first to @p last, and reports the images of the range
 * that are there. One image is copied, to the place that its number has in the range.
 * @param first       number of the first image wanted, 1 or more
 * @param last        number of the last image wanted, @p first or more
 * @param array       room for @p size x (@p last - @p first + 1) pixels
 * @param size        pixels of one image
 * @param validFirst  written with the number of the image copied, 0 for none
 * @param validLast   written with the number of the last image of the range that is there, 0 for none
 * @return #RC_SUCCESS; #RC_P3_INVALID for a null array; #RC_P4_INVALID for another size; #RC_P1_INVALID when @p
 *         first is below 1; #RC_P2_INVALID when it is above @p last; #RC_NO_NEW_DATA when no image of the range is
 *         there
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
 * Copies image number @p image, and answers #RC_SUCCESS only if all of the copy is of that image. While a run goes on,
 * the camera writes over the memory of old images, and it may be ahead of the counted images by as many as the ring has
 * buffers: after a copy with any other function, you cannot know whether the camera has written over it meanwhile.
 *
 * Images of a finite run that is not written to disk are never overwritten. In other runs with metadata (see
 * SetMetaData()), the clock values in the buffers that the camera fills before this image's buffer show after the copy
 * that the camera has not reached it. Without metadata, or when the camera puts no clock values there, only images of
 * the newer half of the ring are copied; the answer is then right as long as the library is behind the camera by less
 * than half a ring. From a ring of one buffer no image is copied.
 * @param image  number of the image, 1 or more
 * @param array  room for @p size pixels. It stays as it is, but after #RC_NO_NEW_DATA its contents are undefined
 * @param size   pixels of one image
 * @param ticks  written with the image's clock value, in ticks as from vxsys_GetRawMetaDataInfo(); 0 when the
 *               image has none and after every code but #RC_SUCCESS
 * @return #RC_SUCCESS; #RC_P1_INVALID when @p image is below 1; #RC_P2_INVALID for a null array; #RC_P3_INVALID for
 *         another size; #RC_NO_NEW_DATA when the image is not there yet, is gone, may have been overwritten, or is of
 *         another image area
 */
VXMCD_API unsigned int vxmcd_GetIntactImage8(long image, unsigned char* array, unsigned long size,
                                             long long* ticks);
/** @copydoc vxmcd_GetIntactImage8 */
VXMCD_API unsigned int vxmcd_GetIntactImage16(long image, unsigned short* array, unsigned long size,
                                              long long* ticks);
/** @copydoc vxmcd_GetIntactImage8 */
VXMCD_API unsigned int vxmcd_GetIntactImage(long image, int* array, unsigned long size, long long* ticks);
/**
 * Reports which images are available. After FreeInternalMemory() none is, though numbers are still reported.
 * @param first  written with the number of the oldest, 0 for none
 * @param last   written with the number of the newest, 0 for none
 * @return #RC_SUCCESS; #RC_P1_INVALID, #RC_P2_INVALID for a null pointer; #RC_NO_NEW_DATA when there is none
 */
VXMCD_DECORATED unsigned int GetNumberAvailableImages(int* first, int* last);
/** Writes how many images the present or last run has delivered so far. Returns #RC_SUCCESS. */
VXMCD_DECORATED unsigned int GetTotalNumberImagesAcquired(long* count);
/** @} */

/** @defgroup profiles Profile files
 *  These functions read INI-style text files: sections in brackets, lines `key = value`, comments after `;`. They need
 *  no camera and do not return result codes. Names are compared without regard to case; spaces in the file's names, and
 *  spaces and quotes in its values, are ignored, so `[ My Section ]` is called `MySection`. Names and values have 255
 *  characters at most. The last line of a file must end in a line break: a value that ends with the file counts as
 *  missing. Only regular files are read; anything else counts as a file that does not exist. Callable at any time from
 *  any thread.
 *  @{ */
/**
 * Reads a whole number: decimal, hexadecimal after `0x` or octal after `0`; 0 for a text that is not a number.
 * @param section       name of the section
 * @param key           name of the key
 * @param defaultValue  what to return when file, section, key or value is missing
 * @param fileName      the file
 * @return the number's lower 32 bits, or @p defaultValue; 0 for a null section, key or file name
 */
VXMCD_DECORATED unsigned int GetPrivateProfileInt(const char* section, const char* key, int defaultValue,
                                                  const char* fileName);
/**
 * Reads a value, or lists the keys of a section (null @p key) or the sections (null @p section). A list has the names
 * one after the other, a zero byte after each and one more after the last.
 * @param section       name of the section, null to list them all
 * @param key           name of the key, null to list those of the section
 * @param defaultValue  copied to @p buffer, *whatever its length*, when file, section, key or value is missing
 * @param buffer        receives the text; untouched when an argument is refused
 * @param size          bytes in @p buffer, 2 or more; a longer text is cut and terminated
 * @param fileName      the file
 * @return for a value its length in @p buffer; for a list one less than the number of bytes before its last zero byte
 *         (all bits set for an empty list, @p size - 2 for one that was cut); 0 when the default was copied, and for a
 *         null default, buffer or file name or a @p size below 2
 */
VXMCD_DECORATED unsigned int GetPrivateProfileString(const char* section, const char* key,
                                                     const char* defaultValue, char* buffer, unsigned int size,
                                                     const char* fileName);
/** Writes nothing; kept for programs that call it. Returns 0. */
VXMCD_DECORATED unsigned int WritePrivateProfileString(const char* section, const char* key, const char* value,
                                                       const char* fileName);
/** @} */

#ifdef __cplusplus
}
#endif

#ifndef VXMCD_WITHOUT_FIXED_RESULTS
#include "vxmcd_fixed_results.h"
#endif

#ifdef __cplusplus
#include <string>

/**
 * Finds the text of the camera's "TriggerMode" that means an external trigger: "External Level Transition" on a
 * camera with a trigger configuration, else "External". Needs no open camera; without one it writes
 * nothing. For C++ only.
 * @param value  written with the text
 * @return #RC_SUCCESS; #RC_FEATURE_ERROR when it cannot be read
 * @ingroup settings
 */
VXMCD_API unsigned int TriggerModeFeatureFinder(std::wstring& value);
#endif

#endif

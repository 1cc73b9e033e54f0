/* SPDX-License-Identifier: MIT */
/* Control of the simulated cameras of vxcore.h: configuration, frames on request, faults, and a log of calls. */

/**
 * @file vxcore_simulator.h
 * Control functions of the simulated cameras that come with this `libvxcore.so.3`. Camera programs do not need them;
 * tests, demonstrations and benchmarks do. `libvxmcd.so.3` never calls them.
 *
 * Every function may be called from any thread, before or after VX_InitialiseLibrary(). A `device` is an index into the
 * device list, not a handle. Functions return #VX_SUCCESS or a `VX_ERR_` code unless said otherwise.
 */
#ifndef VXCORE_SIMULATOR_H
#define VXCORE_SIMULATOR_H

#include "vxcore.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** Counters of one device since it was opened. */
typedef struct VXSIM_Statistics
{
  uint64_t framesProduced;   /**< frames exposed by the sensor in all runs */
  uint64_t framesDelivered;  /**< frames delivered by VX_WaitBuffer() */
  uint64_t framesOverflowed; /**< frames lost because the camera's memory was full */
  uint64_t framesDropped;    /**< frames lost on purpose, by a fault rule */
  uint64_t
      framesDiscarded;    /**< frames taken back by VX_Flush(), a stop or VX_Close() before they were delivered */
  uint64_t buffersQueued; /**< successful VX_QueueBuffer() calls */
  uint64_t buffersHeld;   /**< buffers that belong to the library now, empty or filled */
  uint64_t runsStarted;   /**< successful "AcquisitionStart" commands */
  uint64_t triggersIgnored; /**< triggers that came while the sensor was busy */
  uint64_t waitsBlocked;    /**< calls of VX_WaitBuffer() that are waiting for a frame now */
} VXSIM_Statistics;

/**
 * Closes every device, ends every initialisation, and clears faults, call log and the text given to VXSIM_Configure().
 * The next VX_InitialiseLibrary() reads the configuration again (from the file that `VXCORE_CONFIG` names, else the
 * built-in one).
 */
VXCORE_API int VXSIM_Reset(void);

/**
 * Takes the configuration from a text in the form of the configuration file (docs/simulator.md); null returns to
 * `VXCORE_CONFIG`. Includes VXSIM_Reset().
 * @return #VX_ERR_OUT_OF_RANGE when the text has an error; VXSIM_GetLastError() then describes it
 */
VXCORE_API int VXSIM_Configure(const char* text);

/** The message of the last rejected configuration or fault rule on this thread; "" when there is none. Valid on this
 *  thread until its next call that takes a configuration or a rule: VXSIM_Configure(), VXSIM_AddFault(),
 *  VX_InitialiseLibrary(). */
VXCORE_API const char* VXSIM_GetLastError(void);

/** The number of successful VX_InitialiseLibrary() calls that no VX_FinaliseLibrary() has matched yet. */
VXCORE_API int VXSIM_GetInitialiseCount(void);
/** How many devices are open. */
VXCORE_API int VXSIM_GetOpenCount(void);
/** Counters of a device. */
VXCORE_API int VXSIM_GetStatistics(int device, VXSIM_Statistics* statistics);

/** @name Frames on request
 *  A device configured with `Source = manual` makes no frames by itself while it acquires.
 *  @{ */
/**
 * Fills the next queued buffer with @p sizeBytes bytes from @p bytes and makes it ready for VX_WaitBuffer(), which
 * reports @p sizeBytes. Null bytes: a frame of the configured scene, as the camera would make it. While no buffer is
 * queued the frame waits in the camera's memory.
 * @return #VX_ERR_NOT_AVAILABLE when the device is not acquiring or not configured for it;
 *         #VX_ERR_BUFFER_TOO_SMALL when the frame does not fit; #VX_ERR_HARDWARE_OVERFLOW when it was lost because
 *         the memory is full
 */
VXCORE_API int VXSIM_PushFrame(int device, const void* bytes, int sizeBytes);
/** Makes @p count frames of the configured scene, one after the other, without waiting for buffers. Ends early when the
 *  run has all its frames; the code is that of the first frame that did not succeed. */
VXCORE_API int VXSIM_PushFrames(int device, int count);
/** Makes VX_WaitBuffer() answer @p code once, after the frames that are ready now. */
VXCORE_API int VXSIM_PushWaitCode(int device, int code);
/** Gives one pulse on the external trigger input, now. With the real clock a sensor that is busy ignores it. */
VXCORE_API int VXSIM_FireTrigger(int device);
/**
 * Advances the camera's time by @p seconds (0 to 1e6) at once; a run pauses meanwhile. A test cools a sensor with it.
 * With the real clock only the camera's temperatures change. `TimeScale` applies to temperatures here, too.
 * @return #VX_ERR_NOT_AVAILABLE when the device is not open; #VX_ERR_OUT_OF_RANGE
 */
VXCORE_API int VXSIM_AdvanceTime(int device, double seconds);
/** @} */

/** @name Faults
 *  A rule is a line of the fault plan language (docs/simulator.md), for example
 *  `call VX_QueueBuffer at 7 rc 54`, `call VX_GetInt feature ImageSizeBytes from 1 rc 53`, `frame 100 drop`.
 *  Rules count from the moment they are added.
 *  @{ */
/** @return #VX_ERR_OUT_OF_RANGE when the rule cannot be understood; see VXSIM_GetLastError() */
VXCORE_API int VXSIM_AddFault(const char* rule);
VXCORE_API int VXSIM_ClearFaults(void);
/** How many times a rule has acted since VXSIM_ClearFaults(). */
VXCORE_API uint64_t VXSIM_GetFaultsFired(void);
/** Unplugs a device: a run ends, and every call on the device answers #VX_ERR_COMMUNICATION until it is plugged in
 *  again. VX_Flush() and VX_Close() take the buffers back nevertheless. */
VXCORE_API int VXSIM_SetPlugged(int device, int plugged);
/** @} */

/** @name Call log
 *  The exact sequence of `VX_` calls that reached the library, one line a call:
 *  name, feature if any, value if any, ` -> ` and the code, for example `VX_SetFloat ExposureTime 0.01 -> 0` or
 *  `VX_QueueBuffer 8388608 -> 0`. Calls of VX_WaitBuffer() are logged too, unless left out.
 *  @{ */
/** Starts a new, empty log. @param withWaits 0 leaves VX_WaitBuffer() calls out */
VXCORE_API int VXSIM_StartCallLog(int withWaits);
/** Stops logging; the lines stay readable until the next start. */
VXCORE_API int VXSIM_StopCallLog(void);
/** Number of lines so far. */
VXCORE_API size_t VXSIM_GetCallCount(void);
/** Copies line @p index (from 0) into @p line, cut to @p length bytes with terminator. */
VXCORE_API int VXSIM_GetCall(size_t index, char* line, size_t length);
/** @} */

#ifdef __cplusplus
}
#endif

#endif

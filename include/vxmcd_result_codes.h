/* SPDX-License-Identifier: MIT */
/* Every result code of the library: its name, its number, what it means and what to try. */

/** @file vxmcd_result_codes.h  The one table of result codes; included by vxmcd.h. */
#ifndef VXMCD_RESULT_CODES_H
#define VXMCD_RESULT_CODES_H

/** Expands `ROW(name, code, meaning, advice)` once for each result code, in ascending order of code. */
#define VXMCD_RESULT_CODES(ROW)                                                                                   \
  ROW(RC_SUCCESS, 20002, "the call succeeded", "")                                                                \
  ROW(RC_FILE_LOAD_ERROR, 20006, "a potentiometer file could not be loaded or committed",                         \
      "check that the file exists and names this camera's groups")                                                \
  ROW(RC_FRAME_UNAVAILABLE, 20010, "the acquisition could not be set up, or there is no frame to return",         \
      "check the free memory and the frame size; call ShutDown and Initialize if it stays")                       \
  ROW(RC_FEATURE_ERROR, 20013, "a call into the feature library failed",                                          \
      "check that the camera is still connected")                                                                 \
  ROW(RC_STATUS_TIMED_OUT, 20017, "status: a frame did not arrive in time",                                       \
      "check trigger source and connection, then start again")                                                    \
  ROW(RC_STATUS_HARDWARE_OVERFLOW, 20019, "status: the camera's memory overflowed and frames were lost",          \
      "lower the frame rate or the image area, then start again")                                                 \
  ROW(RC_NO_NEW_DATA, 20024, "there is no new frame, or the wait ended without one", "see GetStatus")             \
  ROW(RC_STATUS_SPOOL_ISSUE, 20026, "status: writing frames to disk failed",                                      \
      "check free space and permissions of the spool directory")                                                  \
  ROW(RC_START_REFUSED, 20027, "the acquisition could not be started", "see the diagnostic log")                  \
  ROW(RC_FILE_SAVE_ERROR, 20029, "a potentiometer file could not be written",                                     \
      "check the directory's permissions")                                                                        \
  ROW(RC_TEMP_OFF, 20034, "the cooler is off", "call CoolerON to cool the sensor")                                \
  ROW(RC_TEMP_NOT_STABILIZED, 20035, "the target temperature is reached but not yet stable", "wait")              \
  ROW(RC_TEMP_STABILIZED, 20036, "the temperature is stable at the target", "")                                   \
  ROW(RC_TEMP_NOT_REACHED, 20037, "the target temperature is not reached yet", "wait")                            \
  ROW(RC_TEMP_DRIFT, 20040, "the temperature was stable and has drifted since", "wait, or check the cooling")     \
  ROW(RC_BINNING_QUERY_FAILED, 20049, "the largest binning could not be read",                                    \
      "check that the camera is still connected")                                                                 \
  ROW(RC_COPY_REFUSED, 20065, "a frame could not be copied line by line",                                         \
      "check the image area against the run's")                                                                   \
  ROW(RC_P1_INVALID, 20066, "the first argument is invalid, or the camera rejected the value",                    \
      "check argument 1")                                                                                         \
  ROW(RC_P2_INVALID, 20067, "the second argument is invalid", "check argument 2")                                 \
  ROW(RC_P3_INVALID, 20068, "the third argument is invalid", "check argument 3")                                  \
  ROW(RC_P4_INVALID, 20069, "the fourth argument is invalid", "check argument 4")                                 \
  ROW(RC_ACQUIRING, 20072, "an acquisition is running", "wait for its end or call AbortAcquisition")              \
  ROW(RC_IDLE, 20073, "no acquisition is running", "")                                                            \
  ROW(RC_NOT_INITIALIZED, 20075, "no camera is open under the current handle", "call Initialize first")           \
  ROW(RC_P5_INVALID, 20076, "the fifth argument is invalid", "check argument 5")                                  \
  ROW(RC_P6_INVALID, 20077, "the sixth argument is invalid", "check argument 6")                                  \
  ROW(RC_I2C_ERROR, 20080, "an I2C transfer failed", "check the device's address and wiring")                     \
  ROW(RC_INVALID_TRIGGER_MODE, 20095, "the camera does not offer this trigger mode now",                          \
      "ask GetCapabilities for the trigger modes")                                                                \
  ROW(RC_INVALID_AMPLIFIER, 20100, "there is no amplifier with this index", "see GetNumberAmp")                   \
  ROW(RC_NO_CAMERA, 20990, "the camera could not be opened", "check power, connection and SetCurrentCamera")      \
  ROW(RC_NOT_SUPPORTED, 20991, "the camera does not offer this or does not answer",                               \
      "check the connection, and GetCapabilities for what the camera offers")                                     \
  ROW(RC_NOT_AVAILABLE, 20992, "not available now, or not offered by this library",                               \
      "try again with other settings, or when no acquisition runs")

/** The result codes by name; functions return them as `unsigned int`. */
enum vxmcd_result_code
{
#define VXMCD_ENUMERATOR(name, code, meaning, advice) name = (code),
  VXMCD_RESULT_CODES(VXMCD_ENUMERATOR)
#undef VXMCD_ENUMERATOR
      VXMCD_RESULT_CODE_END /**< not a result code: one above the highest */
};

#endif

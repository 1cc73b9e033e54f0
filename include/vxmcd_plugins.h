/* SPDX-License-Identifier: MIT */
/* Optional plug-ins: shared libraries that libvxmcd loads at run time. For their authors. */

/**
 * @file vxmcd_plugins.h
 * Two kinds of plug-in libraries, both optional. examples/plugins/ has one of each.
 *
 * - The *configuration library*, libvxconf_regcam.so, reads, stores and interprets the contents of a camera's EEPROM.
 *   Initialize() loads it from the working directory, or else from where the system looks for libraries, and gets a
 *   configuration from it; ShutDown() returns that to it. It exports, with C names,
 *
 *       IConfiguration* GetConfiguration(int coreHandle);                   null when there is none for this camera
 *       int DestroyConfiguration(IConfiguration* configuration);            null if GetConfiguration returned null; the
 *                                                                           result is ignored
 *
 *   libvxmcd calls the configuration through its table of virtual functions, by their positions: #IConfiguration in C++
 *   with the Itanium ABI, which is that of g++ and clang.
 *
 * - The *trigger-board library*, a shared object with the name usbi2c.dll in the working directory, drives a trigger
 *   board. The first Initialize() loads it, the last ShutDown() unloads it; it is used if it exports all of the
 *   functions below, with C names. Their statuses reach the application unchanged. libvxmcd exports functions with the
 *   same names: a plug-in that calls its own functions by name must be linked with -Bsymbolic.
 *
 *       TriggerBoard_GetAvailableTriggers   VxmcdTriggerBoardGetAvailableTriggers
 *       TriggerBoard_GetTriggerHandle       VxmcdTriggerBoardGetTriggerHandle
 *       TriggerBoard_SetCurrentTrigger      VxmcdTriggerBoardSetCurrentTrigger
 *       TriggerBoard_Initialize             VxmcdTriggerBoardInitialize
 *       TriggerBoard_I2CWrite               VxmcdTriggerBoardI2CWrite
 *       TriggerBoard_ShutDown               VxmcdTriggerBoardShutDown
 *       TriggerBoard_ExternalTrigger        VxmcdTriggerBoardExternalTrigger
 *
 * A process that has more rights than its user (a set-user-ID program, say) loads nothing from the working directory.
 *
 * Plug-ins should not throw: what GetConfiguration throws leaves Initialize(), which cannot open that camera any more.
 *
 * Functions run on the thread of the application that makes the call: those of a configuration library one call at a
 * time for one camera, those of a trigger-board library several at a time. Undefined symbols of a plug-in are looked up
 * at their first call; a symbol that nothing defines ends the process then. Plug-ins must not call Initialize() or
 * ShutDown(), and a trigger-board library must not call vxsys_CameraPots...(), whose observers may be waiting for it.
 * TriggerBoard functions of libvxmcd that a trigger-board library calls while it is loaded or unloaded, from a
 * constructor for example, answer 1.
 */
#ifndef VXMCD_PLUGINS_H
#define VXMCD_PLUGINS_H

#ifdef __cplusplus

/**
 * The contents of a camera's EEPROM, made by a configuration library. libvxmcd calls the operations with a name here;
 * those that are reserved are the plug-in's own. The destructor has the positions 1 and 2.
 */
class IConfiguration
{
public:
  virtual ~IConfiguration() {}
  /** Position 3: reads the contents from the camera. 0 is success, here and below. */
  virtual int ReadFromEEPROM() = 0;
  /** Position 4: stores the contents in the camera. */
  virtual int WriteToEEPROM() = 0;
  /** Position 5: loads the contents from a file. The argument is the application's, unchanged. */
  virtual int LoadFromFile(const char* fileName) = 0;
  /** Position 6: writes the contents to a file. The argument is the application's, unchanged. */
  virtual int SaveToFile(const char* fileName) = 0;
  virtual void Reserved7() {}
  virtual void Reserved8() {}
  virtual void Reserved9() {}
  virtual void Reserved10() {}
  virtual void Reserved11() {}
  virtual void Reserved12() {}
  virtual void Reserved13() {}
  virtual void Reserved14() {}
  virtual void Reserved15() {}
  /** Position 16: the version of the contents. */
  virtual unsigned int GetVersion() = 0;
};

extern "C" {

/** GetConfiguration and DestroyConfiguration of a configuration library. */
typedef IConfiguration* (*VxmcdGetConfiguration)(int coreHandle);
typedef int (*VxmcdDestroyConfiguration)(IConfiguration* configuration);

#endif

/** Writes the number of triggers. */
typedef int (*VxmcdTriggerBoardGetAvailableTriggers)(int* count);
/** Writes the handle of the trigger at an index. */
typedef int (*VxmcdTriggerBoardGetTriggerHandle)(int index, int* handle);
/** Chooses the trigger that the others act on. */
typedef int (*VxmcdTriggerBoardSetCurrentTrigger)(int index);
typedef int (*VxmcdTriggerBoardInitialize)(void);
/** Sends three bytes, each of them 0 to 255. */
typedef int (*VxmcdTriggerBoardI2CWrite)(unsigned int first, unsigned int second, unsigned int third);
typedef int (*VxmcdTriggerBoardShutDown)(void);
/** Sets up a pulse; libvxmcd has no function for applications that calls it yet. */
typedef int (*VxmcdTriggerBoardExternalTrigger)(int trigger, unsigned long first, unsigned long second);

#ifdef __cplusplus
}
#endif

#endif

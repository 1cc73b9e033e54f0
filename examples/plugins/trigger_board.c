/* SPDX-License-Identifier: MIT */
/* A trigger-board library for a board that exists only here: two triggers with the handles 1000 and 1001, and a
   register file that I2C writes go to. */
#include "vxmcd_plugins.h"

#include <stdatomic.h>

#define EXPORTED __attribute__((visibility("default")))

enum
{
  TRIGGERS = 2,
  FIRST_HANDLE = 1000,
  REGISTERS = 256
};

/* The statuses of this library. */
enum
{
  DONE = 0,
  NOT_INITIALIZED = -1,
  NO_SUCH_TRIGGER = -2,
  NO_OUTPUT = -3,
  NO_SUCH_DEVICE = -4
};

enum
{
  DEVICE_ADDRESS = 0x50
};

/* Programs may call these functions from several threads at a time. */
static atomic_int isInitialized;
static atomic_uchar registers[REGISTERS];

EXPORTED int TriggerBoard_Initialize(void);
EXPORTED int TriggerBoard_ShutDown(void);
EXPORTED int TriggerBoard_GetAvailableTriggers(int* count);
EXPORTED int TriggerBoard_GetTriggerHandle(int index, int* handle);
EXPORTED int TriggerBoard_SetCurrentTrigger(int index);
EXPORTED int TriggerBoard_I2CWrite(unsigned int address, unsigned int reg, unsigned int value);
EXPORTED int TriggerBoard_ExternalTrigger(int trigger, unsigned long delayUs, unsigned long widthUs);
/* Not part of the interface: reads a register back, to try this example. */
EXPORTED int TriggerBoard_ReadRegister(unsigned int reg);

int TriggerBoard_Initialize(void)
{
  isInitialized = 1;
  return DONE;
}

int TriggerBoard_ShutDown(void)
{
  if (!isInitialized) return NOT_INITIALIZED;
  isInitialized = 0;
  return DONE;
}

int TriggerBoard_GetAvailableTriggers(int* count)
{
  if (!count) return NO_OUTPUT;
  *count = TRIGGERS;
  return DONE;
}

int TriggerBoard_GetTriggerHandle(int index, int* handle)
{
  if (index < 0 || index >= TRIGGERS) return NO_SUCH_TRIGGER;
  if (!handle) return NO_OUTPUT;
  *handle = FIRST_HANDLE + index;
  return DONE;
}

int TriggerBoard_SetCurrentTrigger(int index)
{
  if (!isInitialized) return NOT_INITIALIZED;
  if (index < 0 || index >= TRIGGERS) return NO_SUCH_TRIGGER;
  return DONE;
}

int TriggerBoard_I2CWrite(unsigned int address, unsigned int reg, unsigned int value)
{
  if (!isInitialized) return NOT_INITIALIZED;
  if (address != DEVICE_ADDRESS || reg >= REGISTERS) return NO_SUCH_DEVICE;
  registers[reg] = (unsigned char)value;
  return DONE;
}

int TriggerBoard_ExternalTrigger(int trigger, unsigned long delayUs, unsigned long widthUs)
{
  if (!isInitialized) return NOT_INITIALIZED;
  if (trigger < 0 || trigger >= TRIGGERS || widthUs == 0) return NO_SUCH_TRIGGER;
  registers[0] = (unsigned char)trigger;
  registers[1] = (unsigned char)delayUs;
  registers[2] = (unsigned char)widthUs;
  return DONE;
}

int TriggerBoard_ReadRegister(unsigned int reg)
{
  return reg < REGISTERS ? registers[reg] : NO_SUCH_DEVICE;
}

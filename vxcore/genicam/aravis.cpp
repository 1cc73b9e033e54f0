// SPDX-License-Identifier: MIT
// Errors of Aravis as codes of the feature library.
#include "vxcore/genicam/aravis.h"

#include "vxcore.h"

namespace vxgenicam {

namespace {

int CodeOfDeviceError(int code)
{
  switch (code) {
  case ARV_DEVICE_ERROR_FEATURE_NOT_FOUND:
  case ARV_DEVICE_ERROR_PROTOCOL_ERROR_NOT_IMPLEMENTED:
    return VX_ERR_NOT_IMPLEMENTED;
  case ARV_DEVICE_ERROR_WRONG_FEATURE:
    return VX_ERR_WRONG_KIND;
  case ARV_DEVICE_ERROR_NOT_CONTROLLER:
    return VX_ERR_DEVICE_IN_USE;
  case ARV_DEVICE_ERROR_INVALID_PARAMETER:
  case ARV_DEVICE_ERROR_PROTOCOL_ERROR_INVALID_PARAMETER:
    return VX_ERR_OUT_OF_RANGE;
  case ARV_DEVICE_ERROR_PROTOCOL_ERROR: // an answer with a status that has no code of its own
  case ARV_DEVICE_ERROR_PROTOCOL_ERROR_INVALID_ADDRESS:
    return VX_ERR_NOT_AVAILABLE;
  case ARV_DEVICE_ERROR_PROTOCOL_ERROR_WRITE_PROTECT:
  case ARV_DEVICE_ERROR_PROTOCOL_ERROR_ACCESS_DENIED:
  case ARV_DEVICE_ERROR_PROTOCOL_ERROR_BUSY:
    return VX_ERR_NOT_WRITABLE;
  default:
    return VX_ERR_COMMUNICATION;
  }
}

int CodeOfDescriptionError(int code)
{
  switch (code) {
  case ARV_GC_ERROR_OUT_OF_RANGE:
  case ARV_GC_ERROR_ENUM_ENTRY_NOT_FOUND:
  case ARV_GC_ERROR_INVALID_LENGTH:
    return VX_ERR_OUT_OF_RANGE;
  case ARV_GC_ERROR_READ_ONLY:
    return VX_ERR_NOT_WRITABLE;
  case ARV_GC_ERROR_NO_DEVICE_SET:
    return VX_ERR_COMMUNICATION;
  default: // the camera's description names what it does not have
    return VX_ERR_NOT_AVAILABLE;
  }
}

} // namespace

int TError::Code() const
{
  if (!error_) return VX_SUCCESS;
  if (error_->domain == arv_device_error_quark()) return CodeOfDeviceError(error_->code);
  if (error_->domain == arv_gc_error_quark()) return CodeOfDescriptionError(error_->code);
  // What is left are formulas of the description that cannot be calculated.
  return error_->domain == G_IO_ERROR ? VX_ERR_COMMUNICATION : VX_ERR_NOT_AVAILABLE;
}

bool TError::IsTimeout() const
{
  return error_ && error_->domain == arv_device_error_quark() && error_->code == ARV_DEVICE_ERROR_TIMEOUT;
}

} // namespace vxgenicam

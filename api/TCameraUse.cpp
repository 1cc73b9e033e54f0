// SPDX-License-Identifier: MIT
// The use that an entry point makes of an open camera.
#include "api/TCameraUse.h"

#include "acquisition/TVxmcdAcquisitionManager.h"

TCameraUse::~TCameraUse()
{
  if (manager_) manager_->Uses().Leave();
}

// The cursor is a plain field of the record; one thread may reset it by a start while another takes images.
int TCameraUse::GetRetrievalCursor() const
{
  return __atomic_load_n(&camera_->retrievalCursor, __ATOMIC_RELAXED);
}

void TCameraUse::SetRetrievalCursor(int image) const
{
  __atomic_store_n(&camera_->retrievalCursor, image, __ATOMIC_RELAXED);
}

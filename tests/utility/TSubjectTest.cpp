// SPDX-License-Identifier: MIT
// Observers of a subject, including those that change the list while they are notified.
#include "utility/TSubject.h"

#include "utility/TObserver.h"

#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace {

struct Observer final : TObserver
{
  explicit Observer(std::function<void()> notified) : notified_(std::move(notified)) {}
  unsigned int DoUpdate() override
  {
    notified_();
    return 0;
  }

private:
  std::function<void()> notified_;
};

} // namespace

// An observer that is gone leaves its address to the next one.
TEST(Subject, ANewObserverInThePlaceOfAnOldOneIsNotifiedFromTheNextTimeOn)
{
  TSubject subject;
  std::string notified;
  std::optional<Observer> place;
  Observer changer([&] {
    notified += 'c';
    subject.RemoveObserver(&*place);
    place.emplace([&] { notified += 'n'; });
    subject.RegisterObserver(&*place);
  });
  place.emplace([&] { notified += 'o'; });
  subject.RegisterObserver(&changer);
  subject.RegisterObserver(&*place);
  subject.NotifyObservers();
  EXPECT_EQ(notified, "c");
  subject.RemoveObserver(&changer);
  subject.NotifyObservers();
  EXPECT_EQ(notified, "cn");
}

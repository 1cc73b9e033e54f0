// SPDX-License-Identifier: MIT
// Observers of a subject, including those that change the list while they are told.
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
  explicit Observer(std::function<void()> told) : told_(std::move(told)) {}
  unsigned int DoUpdate() override
  {
    told_();
    return 0;
  }

private:
  std::function<void()> told_;
};

} // namespace

// An observer that is gone leaves its address to the next one.
TEST(Subject, ANewObserverInThePlaceOfAnOldOneIsToldFromTheNextTimeOn)
{
  TSubject subject;
  std::string told;
  std::optional<Observer> place;
  Observer changer([&] {
    told += 'c';
    subject.RemoveObserver(&*place);
    place.emplace([&] { told += 'n'; });
    subject.RegisterObserver(&*place);
  });
  place.emplace([&] { told += 'o'; });
  subject.RegisterObserver(&changer);
  subject.RegisterObserver(&*place);
  subject.NotifyObservers();
  EXPECT_EQ(told, "c");
  subject.RemoveObserver(&changer);
  subject.NotifyObservers();
  EXPECT_EQ(told, "cn");
}

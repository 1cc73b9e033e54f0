// SPDX-License-Identifier: MIT
// The faults that are planned: which rule acts at which call or frame.
#include "vxcore/front/TFaultPlan.h"

namespace vxcore {

TFaultPlan& TFaultPlan::Instance()
{
  static auto& plan = *new TFaultPlan; // outlives every thread that may still call
  return plan;
}

bool TFaultPlan::Add(const std::string& line, std::string& error)
{
  TFaultRule rule;
  if (!TFaultRule::Parse(line, rule, error)) return false;
  const std::lock_guard lock(mutex_);
  if (rule.subject == EFaultSubject::Seed) {
    random_ = true;
    generator_.seed(static_cast<uint64_t>(rule.fault.number));
    return true;
  }
  TEntry entry;
  entry.rule = std::move(rule);
  entry.random = random_;
  entry.armed = !random_ || generator_() % 4 == 0;
  entries_.push_back(std::move(entry));
  active_.store(true, std::memory_order_relaxed);
  return true;
}

void TFaultPlan::Clear()
{
  const std::lock_guard lock(mutex_);
  entries_.clear();
  random_ = false;
  fired_.store(0, std::memory_order_relaxed);
  active_.store(false, std::memory_order_relaxed);
}

std::optional<TFaultRule> TFaultPlan::OnCall(std::string_view function, std::wstring_view feature, int device)
{
  const std::lock_guard lock(mutex_);
  std::optional<TFaultRule> found;
  for (TEntry& entry : entries_) {
    const TFaultRule& rule = entry.rule;
    if (rule.subject != EFaultSubject::Call || rule.function != function) continue;
    if (!rule.feature.empty() && rule.feature != feature) continue;
    if (rule.device >= 0 && rule.device != device) continue;
    if (Matches(entry) && !found) found = rule;
  }
  if (found) fired_.fetch_add(1, std::memory_order_relaxed);
  return found;
}

std::optional<TFaultRule> TFaultPlan::OnRead(std::wstring_view feature, int device)
{
  const std::lock_guard lock(mutex_);
  std::optional<TFaultRule> found;
  for (TEntry& entry : entries_) {
    const TFaultRule& rule = entry.rule;
    if (rule.subject != EFaultSubject::Value || rule.feature != feature) continue;
    if (rule.device >= 0 && rule.device != device) continue;
    if (Matches(entry) && !found) found = rule;
  }
  if (found) fired_.fetch_add(1, std::memory_order_relaxed);
  return found;
}

std::vector<TPlannedFault> TFaultPlan::OnFrame(EFaultSubject subject, int device)
{
  const std::lock_guard lock(mutex_);
  std::vector<TPlannedFault> found;
  for (TEntry& entry : entries_) {
    const TFaultRule& rule = entry.rule;
    if (rule.subject != subject || (rule.device >= 0 && rule.device != device)) continue;
    if (Matches(entry)) found.push_back(rule.fault);
  }
  fired_.fetch_add(found.size(), std::memory_order_relaxed);
  return found;
}

bool TFaultPlan::Matches(TEntry& entry)
{
  const uint64_t match = ++entry.matches;
  const TFaultRule& rule = entry.rule;
  if (match < rule.first) return false;
  const bool due = rule.interval == 0 ? match == rule.first : (match - rule.first) % rule.interval == 0;
  if (!due || !entry.armed) return false;
  return !entry.random || generator_() % 4 == 0;
}

} // namespace vxcore

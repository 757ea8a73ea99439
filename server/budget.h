// SPDX-License-Identifier: Apache-2.0
//
// An amount that several threads share: bytes of memory, or places. They take from it and return to
// it.

#pragma once

#include <atomic>
#include <cstddef>
#include <utility>

namespace hcy::server {

// All functions may be called by several threads at once.
class Budget {
 public:
  explicit Budget(std::size_t limit) : limit_(limit) {}

  void setLimit(std::size_t limit) noexcept { limit_ = limit; }

  // False if that much is not left; then nothing is taken.
  bool take(std::size_t amount) noexcept {
    const std::size_t limit = limit_;
    std::size_t taken = taken_;
    do {
      if (taken > limit || amount > limit - taken) return false;
    } while (!taken_.compare_exchange_weak(taken, taken + amount));
    return true;
  }

  void giveBack(std::size_t amount) noexcept { taken_ -= amount; }

 private:
  std::atomic<std::size_t> limit_;
  std::atomic<std::size_t> taken_{0};
};

// What its owner has taken of a budget, which lives longer; returned when the share is destroyed.
class BudgetShare {
 public:
  explicit BudgetShare(Budget& budget) noexcept : budget_(&budget) {}
  BudgetShare(BudgetShare&& other) noexcept
      : budget_(other.budget_), amount_(std::exchange(other.amount_, 0)) {}
  BudgetShare& operator=(BudgetShare&& other) noexcept {
    std::swap(budget_, other.budget_);
    std::swap(amount_, other.amount_);
    return *this;
  }
  ~BudgetShare() { budget_->giveBack(amount_); }

  // False if that much is not left; then the share is unchanged. A smaller amount changes nothing.
  [[nodiscard]] bool growTo(std::size_t amount) noexcept {
    if (amount <= amount_) return true;
    if (!budget_->take(amount - amount_)) return false;
    amount_ = amount;
    return true;
  }

 private:
  Budget* budget_;
  std::size_t amount_ = 0;
};

}  // namespace hcy::server

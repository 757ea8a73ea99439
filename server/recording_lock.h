// SPDX-License-Identifier: Apache-2.0
//
// Servers that record in one folder at the same time take turns, and count their calls together.

#pragma once

#include <cstddef>
#include <filesystem>

namespace hcy::server {

// One thread uses it at a time.
class RecordingLock {
 public:
  // Makes the file .lock in the folder. Throws std::runtime_error.
  explicit RecordingLock(const std::filesystem::path& folder);
  RecordingLock(const RecordingLock&) = delete;
  RecordingLock& operator=(const RecordingLock&) = delete;
  ~RecordingLock();

  // A turn, from construction to destruction; it ends with the process, too.
  class Turn {
   public:
    // Blocks while another server has its turn. Throws std::runtime_error.
    explicit Turn(RecordingLock& lock);
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;
    ~Turn();

    // The number of the last call that a server has said here; 0 if none has.
    std::size_t lastNumber() const;
    // Throws std::runtime_error.
    void setLastNumber(std::size_t number);

   private:
    RecordingLock& lock_;
  };

 private:
  const std::filesystem::path file_;
  int descriptor_ = -1;
};

}  // namespace hcy::server

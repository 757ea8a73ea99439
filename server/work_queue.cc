// SPDX-License-Identifier: Apache-2.0

#include "work_queue.h"

#include <google/protobuf/arena.h>

#include <algorithm>
#include <exception>
#include <iterator>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "array_values.h"
#include "function_error.h"
#include "hcy.client.VORTENParams.pb.h"
#include "hcy.client.VORTENResult.pb.h"
#include "message_memory.h"
#include "overload.h"
#include "reply_room.h"
#include "serialized_error.h"
#include "wire/varint.h"
#include "wire/wire_fields.h"

namespace hcy::server {
namespace {

using client::VORTEN_Array;
using client::VORTEN_Params;
using client::VORTEN_Result;

// What is sent to a worker may be longer than its request by any amount.
constexpr std::size_t kLongestMessage = 2147483647;
constexpr std::chrono::seconds kWorkerPatience{20};

struct Params {
  int nargout = 0;
  std::vector<Bytes> inputs;
};

std::optional<Params> paramsFrom(std::string_view body) {
  Params params;
  const Bytes bytes{reinterpret_cast<const std::uint8_t*>(body.data()), body.size()};
  const bool isWhole = forEachField(bytes, [&](const WireField& field) {
    if (field.isVarint(VORTEN_Params::kNargoutFieldNumber)) {
      const std::uint8_t* position = bytes.data() + field.begin + 1;
      params.nargout = static_cast<int>(readVarint(position, bytes.data() + field.end));
    } else if (field.is(VORTEN_Params::kRhsFieldNumber)) {
      params.inputs.push_back(field.content);
    }
    return true;
  });
  if (!isWhole) return std::nullopt;
  return params;
}

std::size_t fieldSize(int number, std::size_t length) {
  return varintSize(lengthDelimitedTag(number)) + varintSize(length) + length;
}

// The beginning of a field; its content comes next.
std::uint8_t* beginField(int number, std::size_t length, std::uint8_t* out) {
  return writeVarint(length, writeVarint(lengthDelimitedTag(number), out));
}

std::uint8_t* writeField(int number, Bytes content, std::uint8_t* out) {
  return copyBytes(content, beginField(number, content.size(), out));
}

Bytes bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::string serializedScalar(double value) {
  VORTEN_Array array;
  makeScalar(array, value);
  return array.SerializeAsString();
}

std::string serializedText(std::string_view ascii) {
  VORTEN_Array array;
  array.set_type(VORTEN_Array::CHAR);
  setDimensions(array, {1, ascii.size()});
  for (const char c : ascii) {
    array.mutable_qxchar()->add_elements(static_cast<unsigned char>(c));
  }
  return array.SerializeAsString();
}

// A VORTEN_Result with these outputs.
ByteBuffer resultWith(std::span<const Bytes> outputs) {
  constexpr int kOutput = VORTEN_Result::kLhsFieldNumber;
  std::size_t size = 0;
  for (const Bytes output : outputs) size += fieldSize(kOutput, output.size());
  if (size > kLongestMessage) throw FunctionError(kResultSize, "The outputs take more than 2 GiB.");
  ByteBuffer result;
  result.resizeUninitialized(size);
  auto* out = reinterpret_cast<std::uint8_t*>(result.data());
  for (const Bytes output : outputs) out = writeField(kOutput, output, out);
  return result;
}

// A VORTEN_Result with one output, a cell of one row with these elements.
ByteBuffer resultWithCell(std::span<const Bytes> elements) {
  constexpr int kElement = VORTEN_Array::Cell::kElementsFieldNumber;
  VORTEN_Array head;
  head.set_type(VORTEN_Array::CELL);
  setDimensions(head, {1, elements.size()});
  const std::string beginning = head.SerializeAsString();
  std::size_t cellSize = 0;
  for (const Bytes element : elements) cellSize += fieldSize(kElement, element.size());
  const std::size_t arraySize =
      beginning.size() + fieldSize(VORTEN_Array::kCellFieldNumber, cellSize);
  const std::size_t size = fieldSize(VORTEN_Result::kLhsFieldNumber, arraySize);
  if (size > kLongestMessage) throw std::bad_alloc();
  ByteBuffer result;
  result.resizeUninitialized(size);
  auto* out = reinterpret_cast<std::uint8_t*>(result.data());
  out = beginField(VORTEN_Result::kLhsFieldNumber, arraySize, out);
  out = copyBytes(bytesOf(beginning), out);
  out = beginField(VORTEN_Array::kCellFieldNumber, cellSize, out);
  for (const Bytes element : elements) out = writeField(kElement, element, out);
  return result;
}

// Arrays that a worker sends about a call, beside the outputs.
class Remark {
 public:
  explicit Remark(Bytes bytes) : array_(*google::protobuf::Arena::CreateMessage<Array>(&*arena_)) {
    if (!array_.ParseFromArray(bytes.data(), static_cast<int>(bytes.size()))) {
      throw FunctionError(kArgumentValue, "An input of the worker is broken.");
    }
  }
  Array& operator*() { return array_; }

 private:
  BoundedArena arena_;
  Array& array_;
};

void addFrames(client::VORTEN_Error& error, Array& cell) {
  requireClass(cell, VORTEN_Array::CELL, "stack");
  auto& elements = *cell.mutable_cell()->mutable_elements();
  for (int i = 0; i + 2 < elements.size(); i += 3) {
    auto& frame = *error.add_stack();
    frame.set_file(utf8Text(elements[i], "file"));
    frame.set_name(utf8Text(elements[i + 1], "name"));
    frame.set_line(static_cast<std::int32_t>(realScalar(elements[i + 2], "line")));
  }
}

ByteBuffer errorFrom(std::span<const Bytes> remarks) {
  if (remarks.size() < 2) throw FunctionError(kArgumentCount, "An error has no message.");
  VORTEN_Result result;
  client::VORTEN_Error& error = *result.mutable_error();
  error.set_identifier(utf8Text(*Remark(remarks[0]), "identifier"));
  error.set_message(utf8Text(*Remark(remarks[1]), "message"));
  if (remarks.size() > 2) addFrames(error, *Remark(remarks[2]));
  return ByteBuffer(result.SerializeAsString());
}

// What a worker has computed, as the reply to the call.
ByteBuffer resultFrom(const Params& work, int nargout) {
  const std::span<const Bytes> values = std::span(work.inputs).subspan(2);
  if (utf8Text(*Remark(work.inputs[1]), "kind") == "error") return errorFrom(values);
  const auto wanted = static_cast<std::size_t>(std::max(nargout, 0));
  if (values.size() < wanted) {
    throw FunctionError(kArgumentCount, "The function gave " + std::to_string(values.size()) +
                                            " outputs, and " + std::to_string(wanted) +
                                            " were asked for.");
  }
  return resultWith(values.first(wanted));
}

// Whatever goes wrong is the reply.
template <class Make>
Reply replyFrom(std::string_view function, Make make) try {
  try {
    return make();
  } catch (const FunctionError& error) {
    return resultReply(serialized(error, function), Source::kCommand);
  }
} catch (const Overload& overload) {
  return overloaded(std::string(overload.what()) + "\n");
} catch (const std::bad_alloc&) {
  return overloaded(kNoMemory);
}

}  // namespace

WorkQueue::WorkQueue(std::string workerPath, double seconds)
    : workerPath_(std::move(workerPath)),
      patience_(
          std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds))) {}

void WorkQueue::call(std::string_view name, std::string_view body, Done done) {
  {
    const std::lock_guard lock(mutex_);
    waiting_.push_back({std::string(name), body, std::move(done)});
  }
  match();
}

void WorkQueue::work(std::string_view body, Done done) {
  const auto work = paramsFrom(body);
  const auto refuse = [&](const char* reason) {
    done(replyFrom(workerPath_, [&]() -> Reply { throw FunctionError(kArgumentValue, reason); }));
  };
  if (!work || work->inputs.empty()) return refuse("A worker sends the ticket of a call.");
  double ticket = 0;
  try {
    ticket = realScalar(*Remark(work->inputs[0]), "ticket");
    if (ticket != 0 && work->inputs.size() < 2) {
      throw FunctionError(kArgumentCount, "A worker sends outputs or an error.");
    }
  } catch (const FunctionError& error) {
    return refuse(error.what());
  }
  std::optional<Call> answered;
  {
    const std::lock_guard lock(mutex_);
    workers_.push_back({std::move(done)});
    const auto found = ticket >= 1 && ticket < 1e15
                           ? running_.find(static_cast<std::uint64_t>(ticket))
                           : running_.end();
    if (found != running_.end()) {
      answered = std::move(found->second);
      running_.erase(found);
    }
  }
  if (answered) {
    answered->done(replyFrom(answered->name, [&] {
      const auto params = paramsFrom(answered->body);
      ByteBuffer result = resultFrom(*work, params ? params->nargout : 0);
      BudgetShare room = takeReplyRoom(result.size(), answered->body.size());
      Reply reply = resultReply(std::move(result), Source::kCommand);
      reply.room = std::move(room);
      return reply;
    }));
  }
  match();
}

void WorkQueue::match() {
  for (;;) {
    Call call;
    Done worker;
    std::uint64_t ticket = 0;
    {
      const std::lock_guard lock(mutex_);
      if (waiting_.empty() || workers_.empty()) return;
      call = std::move(waiting_.front());
      waiting_.pop_front();
      if (paramsFrom(call.body)) {
        worker = std::move(workers_.front().done);
        workers_.pop_front();
        ticket = ++lastTicket_;
        running_.emplace(ticket, call);
      }
    }
    if (!worker) {
      call.done(badParams());
      continue;
    }
    worker(replyFrom(workerPath_, [&] {
      const Params params = *paramsFrom(call.body);
      const std::string about[] = {serializedScalar(static_cast<double>(ticket)),
                                   serializedText(call.name), serializedScalar(params.nargout)};
      std::vector<Bytes> elements = {bytesOf(about[0]), bytesOf(about[1]), bytesOf(about[2])};
      elements.insert(elements.end(), params.inputs.begin(), params.inputs.end());
      return resultReply(resultWithCell(elements), Source::kServer);
    }));
  }
}

void WorkQueue::expire() {
  const auto now = Clock::now();
  const auto isOver = [now](const auto& one, Clock::duration patience) {
    return now - one.begin > patience;
  };
  std::vector<Call> calls;
  std::vector<Worker> workers;
  {
    const std::lock_guard lock(mutex_);
    for (; !waiting_.empty() && isOver(waiting_.front(), patience_); waiting_.pop_front()) {
      calls.push_back(std::move(waiting_.front()));
    }
    for (auto one = running_.begin(); one != running_.end();) {
      const bool ends = isOver(one->second, patience_);
      if (ends) calls.push_back(std::move(one->second));
      one = ends ? running_.erase(one) : std::next(one);
    }
    const auto patience = std::min<Clock::duration>(patience_, kWorkerPatience);
    for (; !workers_.empty() && isOver(workers_.front(), patience); workers_.pop_front()) {
      workers.push_back(std::move(workers_.front()));
    }
  }
  for (const Call& call : calls) {
    call.done(replyFrom(call.name, []() -> Reply {
      throw FunctionError("halcyon:function:ended", "No worker gave an answer in time.");
    }));
  }
  for (const Worker& worker : workers) {
    worker.done(
        replyFrom(workerPath_, [] { return resultReply(resultWithCell({}), Source::kServer); }));
  }
}

}  // namespace hcy::server

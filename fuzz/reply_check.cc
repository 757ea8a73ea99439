// SPDX-License-Identifier: Apache-2.0

#include "reply_check.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "array_walk.h"
#include "canned_client.h"
#include "handle.h"
#include "hcy.client.VORTENParams.pb.h"
#include "hcy.client.VORTENResult.pb.h"
#include "message_form.h"
#include "require.h"
#include "runtime/error_info.h"
#include "runtime/feval.h"
#include "wire/dispatch_on_QXType.h"
#include "wire/read_message.h"

namespace hcy::fuzz {
namespace {

constexpr int levels = 3;

using client::VORTEN_Params;
using client::VORTEN_Result;
using Messages = std::vector<VORTEN_Array>;

std::string paramsOf(const Messages& arrays) {
  VORTEN_Params params;
  params.set_nargout(0);
  for (const VORTEN_Array& array : arrays) *params.add_rhs() = array;
  return params.SerializeAsString();
}

std::string withPartsShown(VORTEN_Params params) {
  for (VORTEN_Array& array : *params.mutable_rhs()) showParts(array);
  return params.SerializeAsString();
}

// An array that is stored in others may lie deeper than a reply can bring it.
constexpr int deepEnough = 1000;

VORTEN_Params parsed(const std::string& bytes) {
  VORTEN_Params params;
  const Bytes whole(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  HCY_REQUIRE(mergePart(params, whole, deepEnough));
  return params;
}

class ReplyCheck {
 public:
  explicit ReplyCheck(const std::string& body) {
    auto client = std::make_unique<CannedClient>();
    client->reply = body;
    client_ = client.get();
    context_.client = std::move(client);
    isWhole_ = result_.ParseFromString(body) && !result_.has_error() &&
               std::ranges::all_of(result_.lhs(), [](const VORTEN_Array& array) {
                 return isServedQXType(array.type());
               });
  }

  void run() {
    receive();
    const std::string unread = send(handles());
    if (isWhole_) requireOutputs(unread);
    for (const Handle& output : outputs_) {
      requireMatrices(output.get(), levels);
      readEverything(output.get(), levels);
    }
    HCY_REQUIRE(withPartsShown(parsed(send(handles()))) == withPartsShown(parsed(unread)));
    storeOutputs(unread);
    changeOutputs();
    send(handles());
  }

 private:
  void receive() {
    std::vector<hcyArray*> arrays(static_cast<std::size_t>(result_.lhs_size()), nullptr);
    const int outcome = feval(&context_, "", result_.lhs_size(), arrays.data(), 0, nullptr);
    HCY_REQUIRE(!isWhole_ || outcome == 0);
    if (outcome != 0) readError();
    for (hcyArray* const array : arrays) {
      if (array != nullptr) outputs_.emplace_back(array);
    }
  }

  void readError() {
    hcyErrorInfo info;
    getLastErrorInfo(&context_, &info);
    HCY_REQUIRE(info.kind != HCY_HTTP_ERROR);  // the status is always 200
    destroyLastErrorInfo(&info);
    destroyLastErrorInfo(&info);
  }

  std::vector<const hcyArray*> handles() const {
    std::vector<const hcyArray*> arrays;
    for (const Handle& output : outputs_) arrays.push_back(output.get());
    return arrays;
  }

  // The bytes, which are what the message library writes.
  std::string send(const std::vector<const hcyArray*>& arrays) {
    client_->sent.clear();
    feval(&context_, "", 0, nullptr, static_cast<std::int32_t>(arrays.size()), arrays.data());
    HCY_REQUIRE(!client_->sent.empty());
    HCY_REQUIRE(parsed(client_->sent).SerializeAsString() == client_->sent);
    return client_->sent;
  }

  void requireOutputs(const std::string& sent) {
    Messages messages(result_.lhs().begin(), result_.lhs().end());
    for (std::size_t i = 0; i < messages.size(); ++i) {
      fuzz::requireSame(outputs_[i].get(), messages[i], levels);
      commit(messages[i]);
    }
    HCY_REQUIRE(sent == paramsOf(messages));
  }

  void requireSent(const std::vector<const hcyArray*>& arrays, const Messages& expected) {
    HCY_REQUIRE(withPartsShown(parsed(send(arrays))) == withPartsShown(parsed(paramsOf(expected))));
  }

  // In a container, in copies of it, and in one another.
  void storeOutputs(const std::string& unread) {
    if (outputs_.empty()) return;
    const VORTEN_Params params = parsed(unread);
    Messages messages(params.rhs().begin(), params.rhs().end());
    const Handle cell(hcyCreateCellMatrix(1, outputs_.size()));
    VORTEN_Array expected;
    expected.set_type(VORTEN_Array::CELL);
    expected.add_dimension(1);
    expected.add_dimension(outputs_.size());
    for (std::size_t i = 0; i < outputs_.size(); ++i) {
      hcySetCell(cell.get(), i, outputs_[i].get());
      *expected.mutable_cell()->add_elements() = messages[i];
    }
    const Handle copy(hcyDuplicateArray(cell.get()));
    const Handle copyOfCopy(hcyDuplicateArray(copy.get()));
    requireSent({cell.get(), copy.get(), copyOfCopy.get()}, {expected, expected, expected});
    for (std::size_t i = 0; i < outputs_.size(); ++i) {
      const Handle element(hcyGetCell(copyOfCopy.get(), i));
      const Handle elementCopy(hcyDuplicateArray(element.get()));
      readEverything(element.get(), levels);
      requireSent({element.get(), elementCopy.get()}, {messages[i], messages[i]});
    }
    requireSent({copyOfCopy.get()}, {expected});
    storeInOneAnother(messages);
  }

  // The first output goes into each, the last first, so that it is itself as they hold it.
  void storeInOneAnother(Messages& messages) {
    for (std::size_t i = outputs_.size(); i-- > 0;) {
      hcySetCell(outputs_[i].get(), 0, outputs_[0].get());
      hcySetFieldByNumber(outputs_[i].get(), 0, 0, outputs_[0].get());
    }
    const VORTEN_Array first = messages[0];
    if (auto* const slot = firstSlot(outputs_[0].get(), messages[0])) *slot = first;
    for (std::size_t i = 1; i < messages.size(); ++i) {
      if (auto* const slot = firstSlot(outputs_[i].get(), messages[i])) *slot = messages[0];
    }
    requireSent(handles(), messages);
  }

  // The slot that the functions set; null where there is none.
  static VORTEN_Array* firstSlot(const hcyArray* array, VORTEN_Array& message) {
    if (hcyGetNumberOfElements(array) == 0) return nullptr;
    int slot = 0;
    if (hcyIsStruct(array)) {
      slot = hcyGetFieldNumber(array, hcyGetFieldNameByNumber(array, 0));
    }
    auto* const elements = hcyIsStruct(array) ? message.mutable_struct_()->mutable_elements()
                           : hcyIsCell(array) ? message.mutable_cell()->mutable_elements()
                                              : nullptr;
    const bool isThere = elements != nullptr && slot >= 0 && slot < elements->size();
    return isThere ? elements->Mutable(slot) : nullptr;
  }

  void changeOutputs() {
    for (const Handle& output : outputs_) {
      const Handle copy(hcyDuplicateArray(output.get()));
      for (hcyArray* const array : {copy.get(), output.get()}) {
        changeEverything(array);
        readEverything(array, levels);
      }
    }
  }

  VORTEN_Result result_;
  bool isWhole_ = false;  // and its outputs are arrays that the library serves
  hcyClientContext context_;
  CannedClient* client_;
  std::vector<Handle> outputs_;
};

}  // namespace

void checkReply(const std::string& body) { ReplyCheck(body).run(); }

}  // namespace hcy::fuzz

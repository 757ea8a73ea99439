// SPDX-License-Identifier: Apache-2.0

#include "host_messages.h"
#include "inventory.pb.h"

bool ownMessagesWork() {
  warehouse::Item item;
  item.set_name("bolt");
  item.add_counts(7);
  warehouse::Item read;
  const auto* const pool = google::protobuf::DescriptorPool::generated_pool();
  return read.ParseFromString(item.SerializeAsString()) && read.name() == "bolt" &&
         read.counts(0) == 7 &&
         pool->FindMessageTypeByName("warehouse.Item") == warehouse::Item::descriptor();
}

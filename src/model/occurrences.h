#pragma once

// The derived hierarchy of the in-memory design: one instance occurrence per part placed,
// through every block, below the root schematic.

#include <map>
#include <span>
#include <string>

#include "kalmor/dbo.h"
#include "model/page_objects.h"

namespace kalmor::model::detail {

struct DesignData;
struct Occurrence;

struct PortOccurrence final : DboPortOccurrence {
  const Occurrence* occurrence = nullptr;
  const Pin* pin = nullptr;
  int32_t GetObjectType(DboState&) const override { return model_type::kPortOccurrence; }
  void GetPropStringById(int32_t propId, std::string& value, DboState& state) const override;
};

struct Occurrence final : DboInstOccurrence {
  DboDesignOccurrenceId id = 0;
  std::string path;  // "/BLK1/U3"
  const PartInst* part = nullptr;
  const Schematic* contents = nullptr;                 // null for a primitive occurrence
  std::span<const Occurrence* const> children;         // by the placed part's ordinal
  mutable std::map<const Pin*, PortOccurrence> ports;  // made when first asked for

  int32_t GetObjectType(DboState&) const override { return model_type::kInstOccurrence; }
  bool IsPrimitive(DboState&) const override { return contents == nullptr; }
  const DboView* GetContents(DboState& state) const override;
  const DboInstOccurrence* GetInstOccurrence(const DboPartInst* inst,
                                             DboState& state) const override;
  const DboPortOccurrence* GetPortOccurrence(const DboPortInst* pin,
                                             DboState& state) const override;
  DboDesignOccurrenceId GetDesignOccurrenceId() const override { return id; }
};

// The number of occurrences below `schematic`, or `limit` + 1 when there are more than `limit`.
// The schematics must not instantiate themselves.
uint64_t CountOccurrences(const Schematic& schematic, uint64_t limit);

// Builds the occurrences of `data` depth-first from its root, in page then part order, with
// ids counting from 1, and indexes them by path.
void BuildOccurrences(DesignData& data);

}  // namespace kalmor::model::detail

#pragma once

// The derived hierarchy of the in-memory design: one instance occurrence per part placed,
// through every block, below the root schematic.

#include <memory>
#include <span>
#include <string>
#include <string_view>

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

// Each occurrence links to its parent rather than holding its path, so that a hierarchy n deep
// costs memory in n, not n squared.
struct Occurrence final : DboInstOccurrence {
  DboDesignOccurrenceId id = 0;
  const Occurrence* parent = nullptr;  // null below the root
  const PartInst* part = nullptr;
  const Schematic* contents = nullptr;  // null for a primitive occurrence
  // By the placed part's ordinal, one per part of `contents`.
  const Occurrence* const* children = nullptr;
  mutable std::unique_ptr<PortOccurrence[]> ports;  // by pin, made when first asked for

  std::span<const Occurrence* const> Children() const;

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
// ids counting from 1.
void BuildOccurrences(DesignData& data);

// The occurrence at a path of part ids such as "/BLK1/U3", followed step by step from the root;
// null when there is none.
const Occurrence* FindOccurrenceByPath(const DesignData& data, std::string_view path);

}  // namespace kalmor::model::detail

#pragma once

// The in-memory design database: a whole design, read from a design document, answering every
// operation of the host interface.

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kalmor/dbo.h"

namespace kalmor::model {

namespace detail {
struct DesignData;
}

// An occurrence of a hierarchical block, that is one that shows a schematic.
struct BlockOccurrence {
  static constexpr std::size_t kTop = static_cast<std::size_t>(-1);
  const DboInstOccurrence* occurrence = nullptr;
  std::string id;             // the block's id: the last step of its path
  std::size_t parent = kTop;  // index of the enclosing block in the list, kTop at the root
  std::string schematic;      // the schematic it shows
};

class Design final : public DboDesign {
 public:
  explicit Design(std::unique_ptr<detail::DesignData> data);
  ~Design() override;
  Design(const Design&) = delete;
  Design& operator=(const Design&) = delete;

  const std::string& name() const;
  // The page of that name in the schematic of that name, or null.
  const DboPage* FindPage(std::string_view schematic, std::string_view page) const;
  // The instance occurrence at a path such as "/BLK1/U3", or null.
  const DboInstOccurrence* FindOccurrence(std::string_view path) const;
  // The root schematic's name (empty for a design without schematics).
  std::string_view rootName() const;
  std::size_t occurrenceCount() const;
  // Every block occurrence, depth-first from the root. Paths are not stored whole: a chain of
  // nested blocks would make them grow with the square of its depth.
  std::vector<BlockOccurrence> BlockOccurrences() const;
  // Everything the design holds, for writers of it.
  const detail::DesignData& data() const { return *data_; }

  int32_t GetObjectType(DboState& state) const override;
  void GetName(std::string& name, DboState& state) const override;
  // Mode 6 yields the schematics in document order; the design has no other views.
  std::unique_ptr<DboLibViewsIter> NewViewsIter(int32_t mode, DboState& state) const override;
  std::unique_ptr<DboDesignOccurrencesIter> NewOccurrencesIter(DboState& state) const override;

 private:
  std::unique_ptr<detail::DesignData> data_;
};

}  // namespace kalmor::model

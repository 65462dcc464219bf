#pragma once

// The application's design presented to kalmor through its host interface. The adapter answers
// every operation from what it built once: nothing it is asked can fail or throw, so anything
// that could (measuring a label's text needs a font) happens while it is built.

#include <kalmor/dbo.h>

#include <memory>
#include <vector>

#include "board_data.h"

class BoardAdapter final : public kalmor::DboDesign {
 public:
  // Throws kalmor::EnvironmentError when no font can be loaded to measure the labels.
  explicit BoardAdapter(const Board& board);
  ~BoardAdapter() override;

  const kalmor::DboPage& Page(std::size_t index) const;

  int32_t GetObjectType(kalmor::DboState& state) const override;
  void GetName(std::string& name, kalmor::DboState& state) const override;
  std::unique_ptr<kalmor::DboLibViewsIter> NewViewsIter(int32_t mode,
                                                        kalmor::DboState& state) const override;
  // The board has no hierarchy: its one schematic is found among the views.
  std::unique_ptr<kalmor::DboDesignOccurrencesIter> NewOccurrencesIter(
      kalmor::DboState& state) const override;

 private:
  class Schematic;
  const Board& board_;
  std::unique_ptr<Schematic> schematic_;
};

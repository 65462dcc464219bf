#pragma once

// A design built by hand in memory, for tests of the design walk: schematics, empty pages and
// occurrences, each iterator of which can be made to come back null as a failing host would.

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/dbo.h"

namespace kalmor::testing {

// Hands out the elements of a list in order, then null.
template <typename T>
class ListCursor {
 public:
  explicit ListCursor(const std::vector<std::unique_ptr<T>>& items) : items_(items) {}
  const T* Next() { return next_ < items_.size() ? items_[next_++].get() : nullptr; }

 private:
  const std::vector<std::unique_ptr<T>>& items_;
  std::size_t next_ = 0;
};

// A page with no objects and no visible frame: its file holds the skeleton alone.
class FakePage final : public DboPage {
 public:
  explicit FakePage(std::string name, int32_t height = 8500)
      : name_(std::move(name)), height_(height) {}

  int32_t GetObjectType(DboState&) const override { return 0; }
  void GetName(std::string& name, DboState&) const override { name = name_; }
  int32_t GetPinToPin(DboState&) const override { return 100; }
  int32_t GetPageWidth(DboState&) const override { return 11000; }
  int32_t GetPageHeight(DboState&) const override { return height_; }
  double GetPinToPinScaleFactor(DboState&) const override { return 1.0; }
  int32_t GetOuterBorderIsVisible(DboState&) const override { return 0; }
  LineWidthT GetOuterBorderLineWidth(DboState&) const override { return 0; }
  int32_t GetHorizontalLabelWidth(DboState&) const override { return 20; }
  int32_t GetVerticalLabelWidth(DboState&) const override { return 20; }
  int32_t GetHorizontalLabelCount(DboState&) const override { return 4; }
  int32_t GetVerticalLabelCount(DboState&) const override { return 4; }
  LineWidthT GetHorizontalSeparatorLineWidth(DboState&) const override { return 0; }
  LineWidthT GetVerticalSeparatorLineWidth(DboState&) const override { return 0; }
  int32_t GetHorizontalLabelIsChar(DboState&) const override { return 0; }
  int32_t GetVerticalLabelIsChar(DboState&) const override { return 1; }
  int32_t GetHorizontalLabelIsAscending(DboState&) const override { return 1; }
  int32_t GetVerticalLabelIsAscending(DboState&) const override { return 1; }

  std::unique_ptr<DboPageTitleBlocksIter> NewTitleBlocksIter(DboState&) const override {
    struct None : DboPageTitleBlocksIter {
      const DboTitleBlock* NextTitleBlock(DboState&) override { return nullptr; }
    };
    return std::make_unique<None>();
  }
  std::unique_ptr<DboPagePartInstsIter> NewPartInstsIter(DboState&) const override {
    struct None : DboPagePartInstsIter {
      const DboPartInst* NextPartInst(DboState&) override { return nullptr; }
    };
    return std::make_unique<None>();
  }
  std::unique_ptr<DboPageWiresIter> NewWiresIter(int32_t, DboState&) const override {
    struct None : DboPageWiresIter {
      const DboWire* NextWire(DboState&) override { return nullptr; }
    };
    return std::make_unique<None>();
  }
  std::unique_ptr<DboPageGlobalsIter> NewGlobalsIter(DboState&) const override {
    struct None : DboPageGlobalsIter {
      const DboGlobal* NextGlobal(DboState&) override { return nullptr; }
    };
    return std::make_unique<None>();
  }
  std::unique_ptr<DboPagePortsIter> NewPortsIter(int32_t, DboState&) const override {
    struct None : DboPagePortsIter {
      const DboPort* NextPort(DboState&) override { return nullptr; }
    };
    return std::make_unique<None>();
  }
  std::unique_ptr<DboPageOffPageConnectorsIter> NewOffPageConnectorsIter(int32_t,
                                                                         DboState&) const override {
    struct None : DboPageOffPageConnectorsIter {
      const DboOffPageConnector* NextOffPageConnector(DboState&) override { return nullptr; }
    };
    return std::make_unique<None>();
  }
  std::unique_ptr<DboPageBusEntriesIter> NewBusEntriesIter(DboState&) const override {
    struct None : DboPageBusEntriesIter {
      const DboBusEntry* NextBusEntry(DboState&) override { return nullptr; }
    };
    return std::make_unique<None>();
  }
  std::unique_ptr<DboPageCommentGraphicsIter> NewCommentGraphicsIter(DboState&) const override {
    struct None : DboPageCommentGraphicsIter {
      const DboGraphicInstance* NextCommentGraphic(DboState&) override { return nullptr; }
    };
    return std::make_unique<None>();
  }

 private:
  std::string name_;
  int32_t height_;
};

class FakeSchematic final : public DboSchematic {
 public:
  explicit FakeSchematic(std::string name) : name_(std::move(name)) {}

  FakePage& AddPage(const std::string& name, int32_t height = 8500) {
    return *pages_.emplace_back(std::make_unique<FakePage>(name, height));
  }
  // The host answers with no pages iterator for this schematic.
  void FailPagesIter() { failPages_ = true; }

  int32_t GetObjectType(DboState&) const override { return 0; }
  void GetName(std::string& name, DboState&) const override { name = name_; }
  const DboSchematic* AsSchematic() const override { return this; }
  std::unique_ptr<DboSchematicPagesIter> NewPagesIter(DboState&) const override {
    if (failPages_) {
      return nullptr;
    }
    struct Pages : DboSchematicPagesIter, ListCursor<FakePage> {
      using ListCursor::ListCursor;
      const DboPage* NextPage(DboState&) override { return Next(); }
    };
    return std::make_unique<Pages>(pages_);
  }

 private:
  std::string name_;
  std::vector<std::unique_ptr<FakePage>> pages_;
  bool failPages_ = false;
};

class FakeOccurrence final : public DboInstOccurrence {
 public:
  FakeOccurrence(DboDesignOccurrenceId id, const DboView* contents, bool primitive)
      : id_(id), contents_(contents), primitive_(primitive) {}

  int32_t GetObjectType(DboState&) const override { return dbo_type::kBlockInst; }
  bool IsPrimitive(DboState&) const override { return primitive_; }
  const DboView* GetContents(DboState&) const override { return contents_; }
  const DboInstOccurrence* GetInstOccurrence(const DboPartInst*, DboState&) const override {
    return nullptr;
  }
  const DboPortOccurrence* GetPortOccurrence(const DboPortInst*, DboState&) const override {
    return nullptr;
  }
  DboDesignOccurrenceId GetDesignOccurrenceId() const override { return id_; }

 private:
  DboDesignOccurrenceId id_;
  const DboView* contents_;
  bool primitive_;
};

class FakeDesign final : public DboDesign {
 public:
  explicit FakeDesign(std::string name) : name_(std::move(name)) {}

  // A schematic listed by the views iterator, in the order added.
  FakeSchematic& AddSchematic(const std::string& name) {
    return *schematics_.emplace_back(std::make_unique<FakeSchematic>(name));
  }
  // An occurrence of the hierarchy, in depth-first order.
  FakeOccurrence& AddOccurrence(const DboView* contents, bool primitive = false) {
    const auto id = static_cast<DboDesignOccurrenceId>(occurrences_.size() + 1);
    return *occurrences_.emplace_back(std::make_unique<FakeOccurrence>(id, contents, primitive));
  }
  void FailOccurrencesIter() { failOccurrences_ = true; }
  void FailViewsIter() { failViews_ = true; }

  int32_t GetObjectType(DboState&) const override { return 0; }
  void GetName(std::string& name, DboState&) const override { name = name_; }

  std::unique_ptr<DboLibViewsIter> NewViewsIter(int32_t mode, DboState&) const override {
    if (failViews_ || mode != 6) {
      return nullptr;
    }
    struct Views : DboLibViewsIter, ListCursor<FakeSchematic> {
      using ListCursor::ListCursor;
      const DboView* NextView(DboState&) override { return Next(); }
    };
    return std::make_unique<Views>(schematics_);
  }

  std::unique_ptr<DboDesignOccurrencesIter> NewOccurrencesIter(DboState&) const override {
    if (failOccurrences_) {
      return nullptr;
    }
    struct Occurrences : DboDesignOccurrencesIter, ListCursor<FakeOccurrence> {
      using ListCursor::ListCursor;
      const DboInstOccurrence* NextOccurrence(DboState&) override { return Next(); }
    };
    return std::make_unique<Occurrences>(occurrences_);
  }

 private:
  std::string name_;
  std::vector<std::unique_ptr<FakeSchematic>> schematics_;
  std::vector<std::unique_ptr<FakeOccurrence>> occurrences_;
  bool failOccurrences_ = false;
  bool failViews_ = false;
};

}  // namespace kalmor::testing

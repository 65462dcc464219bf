#include "board_adapter.h"

#include <kalmor/display_text.h>
#include <kalmor/host_text.h>

#include <string>
#include <utility>

using namespace kalmor;

namespace {

// The application's own type codes for objects kalmor has no code for.
constexpr int32_t kDesignType = 1;
constexpr int32_t kSchematicType = 2;
constexpr int32_t kPageType = 3;
constexpr int32_t kOtherType = 99;

CRect Box(Spot corner, Spot size) {
  return {corner.x, corner.y, corner.x + size.x, corner.y + size.y};
}

// Hands out the objects of a list one by one, as every host iterator does.
template <typename Object>
class Cursor {
 public:
  explicit Cursor(const std::vector<std::unique_ptr<Object>>& objects) : objects_(objects) {}
  const Object* Next() { return next_ < objects_.size() ? objects_[next_++].get() : nullptr; }

 private:
  const std::vector<std::unique_ptr<Object>>& objects_;
  std::size_t next_ = 0;
};

// ---- symbol graphics

class BodyBox final : public DboBox {
 public:
  explicit BodyBox(CRect rect) : rect_(rect) {}
  int32_t GetObjectType(DboState&) const override { return dbo_type::kBox; }
  CRect GetRect(DboState&) const override { return rect_; }
  LineWidthT GetLineWidth(DboState&) const override { return 0; }

 private:
  CRect rect_;
};

class Glyph final : public DboCommentText {
 public:
  Glyph(const std::string& text, CRect box) : text_(HostTextFromUtf8(text)), box_(box) {}
  int32_t GetObjectType(DboState&) const override { return dbo_type::kCommentText; }
  CRect GetBoundingBox(DboState&) const override { return box_; }
  void GetFont(LogFont& font, DboState&) const override { font = LogFont{}; }
  void GetText(std::string& text, DboState&) const override { text = text_; }

 private:
  std::string text_;
  CRect box_;
};

class SymbolAdapter final : public DboGraphicObject {
 public:
  // The body's outline, and its glyph in a box at the middle.
  explicit SymbolAdapter(const Symbol& symbol) : box_(Box({}, symbol.size)) {
    const Spot middle{symbol.size.x / 2, symbol.size.y / 2};
    vectors_.push_back(std::make_unique<BodyBox>(box_));
    vectors_.push_back(
        std::make_unique<Glyph>(symbol.glyph, Box({middle.x - 4, middle.y - 6}, {8, 12})));
  }
  int32_t GetObjectType(DboState&) const override { return kOtherType; }
  CRect GetBoundingBox(DboState&) const override { return box_; }
  std::unique_ptr<DboGraphicObjectVectorsIter> NewVectorsIter(int32_t, DboState&) const override {
    struct Iter final : DboGraphicObjectVectorsIter {
      explicit Iter(const std::vector<std::unique_ptr<DboBaseObject>>& v) : cursor(v) {}
      const DboBaseObject* NextVector(DboState&) override { return cursor.Next(); }
      Cursor<DboBaseObject> cursor;
    };
    return std::make_unique<Iter>(vectors_);
  }

 private:
  CRect box_;
  std::vector<std::unique_ptr<DboBaseObject>> vectors_;
};

// ---- parts, pins, labels

class LabelAdapter final : public DboDisplayProp {
 public:
  // The application keeps UTF-8; the export takes host texts.
  LabelAdapter(const Label& label, const DboBaseObject* owner)
      : label_(label),
        name_(HostTextFromUtf8(label.name)),
        value_(HostTextFromUtf8(label.value)),
        owner_(owner),
        type_(label.showName ? 2 : 1),
        extent_(MeasureDisplayPropText(name_, value_, type_, font_)) {}
  int32_t GetObjectType(DboState&) const override { return kOtherType; }
  DisplayTypeT GetDisplayType(DboState&) const override { return type_; }
  void GetName(std::string& name, DboState&) const override { name = name_; }
  void GetValueString(std::string& value, const DboInstOccurrence*, DboState&) const override {
    value = value_;
  }
  void GetValueStringForOccurrence(DboDesignOccurrenceId, std::string& value,
                                   DboState&) const override {
    value = value_;
  }
  CPoint GetLocation(DboState&) const override { return {label_.offset.x, label_.offset.y}; }
  RotationT GetRotation(DboState&) const override { return 0; }
  void GetFont(int32_t, LogFont& font, DboState&) const override { font = font_; }
  const DboBaseObject* GetOwner(DboState&) const override { return owner_; }
  CRect GetBoundingBox(DboState&) const override { return extent_; }

 private:
  const Label& label_;
  std::string name_;
  std::string value_;
  const DboBaseObject* owner_;
  DisplayTypeT type_;
  LogFont font_;  // the default: Arial, 9 high
  CRect extent_;  // measured once, here
};

class PartAdapter;

class PinAdapter final : public DboPortInst {
 public:
  PinAdapter(const Pin& pin, const PartAdapter& owner)
      : pin_(pin),
        name_(HostTextFromUtf8(pin.name)),
        number_(HostTextFromUtf8(pin.number)),
        owner_(owner) {}
  int32_t GetObjectType(DboState&) const override { return kOtherType; }
  CPoint GetStartPoint(DboState&) const override { return {pin_.from.x, pin_.from.y}; }
  CPoint GetEndPoint(DboState&) const override { return {pin_.to.x, pin_.to.y}; }
  int32_t GetIsVisible(DboState&) const override { return 1; }
  void GetPinName(std::string& name, DboState&) const override { name = name_; }
  void GetPinNumber(std::string& number, DboState&) const override { number = number_; }
  int32_t GetIsNoConnect(DboState&) const override { return 0; }
  int32_t GetBlockPinKind(DboState&) const override { return 0; }
  int32_t GetIsDot(DboState&) const override { return 0; }
  int32_t GetIsClock(DboState&) const override { return 0; }
  const DboPartInst* GetOwner(DboState&) const override;
  std::unique_ptr<DboDisplayPropsIter> NewDisplayPropsIter(DboState&) const override {
    return nullptr;  // no labels on pins
  }

 private:
  const Pin& pin_;
  std::string name_;
  std::string number_;
  const PartAdapter& owner_;
};

class PartAdapter final : public DboPartInst {
 public:
  PartAdapter(const Part& part, const SymbolAdapter& symbol) : part_(part), symbol_(symbol) {
    for (const Label& label : part.labels) {
      labels_.push_back(std::make_unique<LabelAdapter>(label, this));
    }
    for (const Pin& pin : part.pins) {
      pins_.push_back(std::make_unique<PinAdapter>(pin, *this));
    }
  }
  int32_t GetObjectType(DboState&) const override { return dbo_type::kPartInst; }
  RotationT GetRotation(DboState&) const override { return 0; }
  CPoint GetLocation(DboState&) const override { return {part_.at.x, part_.at.y}; }
  int32_t GetMirror(DboState&) const override { return 0; }
  const DboGraphicObject* GetDefiningGraphicObject(DboState&) const override { return &symbol_; }
  CRect GetBoundingBox(DboState& state) const override { return symbol_.GetBoundingBox(state); }
  std::unique_ptr<DboDisplayPropsIter> NewDisplayPropsIter(DboState&) const override {
    struct Iter final : DboDisplayPropsIter {
      explicit Iter(const std::vector<std::unique_ptr<LabelAdapter>>& v) : cursor(v) {}
      const DboDisplayProp* NextProp(DboState&) override { return cursor.Next(); }
      Cursor<LabelAdapter> cursor;
    };
    return std::make_unique<Iter>(labels_);
  }
  const DboGraphicObject* GetDefiningPart(DboState&) const override { return &symbol_; }
  int32_t GetPinNamesAreVisible(DboState&) const override { return 1; }
  int32_t GetPinNumbersAreVisible(DboState&) const override { return 1; }
  std::unique_ptr<DboPartInstPinsIter> NewPinsIter(int32_t, int32_t, DboState&) const override {
    struct Iter final : DboPartInstPinsIter {
      explicit Iter(const std::vector<std::unique_ptr<PinAdapter>>& v) : cursor(v) {}
      const DboPortInst* NextPin(DboState&) override { return cursor.Next(); }
      Cursor<PinAdapter> cursor;
    };
    return std::make_unique<Iter>(pins_);
  }

 private:
  const Part& part_;
  const SymbolAdapter& symbol_;
  std::vector<std::unique_ptr<LabelAdapter>> labels_;
  std::vector<std::unique_ptr<PinAdapter>> pins_;
};

const DboPartInst* PinAdapter::GetOwner(DboState&) const {
  return &owner_;
}

// ---- wires

class NetName final : public DboAlias {
 public:
  explicit NetName(const Wire& wire) : wire_(wire), name_(HostTextFromUtf8(wire.net)) {}
  int32_t GetObjectType(DboState&) const override { return kOtherType; }
  CPoint GetLocation(DboState&) const override { return {wire_.from.x + 10, wire_.from.y}; }
  RotationT GetRotation(DboState&) const override { return 0; }
  void GetName(std::string& name, DboState&) const override { name = name_; }
  void GetFont(LogFont& font, DboState&) const override { font = LogFont{}; }

 private:
  const Wire& wire_;
  std::string name_;
};

class WireAdapter final : public DboWire {
 public:
  explicit WireAdapter(const Wire& wire) : wire_(wire) {
    if (!wire.net.empty()) {
      names_.push_back(std::make_unique<NetName>(wire));
    }
  }
  int32_t GetObjectType(DboState&) const override { return dbo_type::kWire; }
  CPoint GetStartPoint(DboState&) const override { return {wire_.from.x, wire_.from.y}; }
  CPoint GetEndPoint(DboState&) const override { return {wire_.to.x, wire_.to.y}; }
  std::unique_ptr<DboDisplayPropsIter> NewDisplayPropsIter(DboState&) const override {
    return nullptr;
  }
  std::unique_ptr<DboWireJunctionsIter> NewJunctionsIter(DboState&) const override {
    return nullptr;
  }
  std::unique_ptr<DboWireAliasesIter> NewAliasesIter(DboState&) const override {
    struct Iter final : DboWireAliasesIter {
      explicit Iter(const std::vector<std::unique_ptr<NetName>>& v) : cursor(v) {}
      const DboAlias* NextAlias(DboState&) override { return cursor.Next(); }
      Cursor<NetName> cursor;
    };
    return std::make_unique<Iter>(names_);
  }

 private:
  const Wire& wire_;
  std::vector<std::unique_ptr<NetName>> names_;
};

}  // namespace

// ---- pages and the schematic

class SheetAdapter final : public DboPage {
 public:
  SheetAdapter(const Sheet& sheet, const std::vector<std::unique_ptr<SymbolAdapter>>& symbols,
               const Board& board)
      : sheet_(sheet) {
    for (const Part& part : sheet.parts) {
      const std::size_t index = static_cast<std::size_t>(part.symbol - board.symbols.data());
      parts_.push_back(std::make_unique<PartAdapter>(part, *symbols[index]));
    }
    for (const Wire& wire : sheet.wires) {
      wires_.push_back(std::make_unique<WireAdapter>(wire));
    }
  }

  int32_t GetObjectType(DboState&) const override { return kPageType; }
  void GetName(std::string& name, DboState&) const override { name = sheet_.name; }
  // An A-size sheet at 100 units per pin spacing.
  int32_t GetPinToPin(DboState&) const override { return 100; }
  int32_t GetPageWidth(DboState&) const override { return 11000; }
  int32_t GetPageHeight(DboState&) const override { return 8500; }
  double GetPinToPinScaleFactor(DboState&) const override { return 1.0; }

  // A border with four zones a side: numbers across, letters down.
  int32_t GetOuterBorderIsVisible(DboState&) const override { return 1; }
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

  std::unique_ptr<DboPagePartInstsIter> NewPartInstsIter(DboState&) const override {
    struct Iter final : DboPagePartInstsIter {
      explicit Iter(const std::vector<std::unique_ptr<PartAdapter>>& v) : cursor(v) {}
      const DboPartInst* NextPartInst(DboState&) override { return cursor.Next(); }
      Cursor<PartAdapter> cursor;
    };
    return std::make_unique<Iter>(parts_);
  }
  std::unique_ptr<DboPageWiresIter> NewWiresIter(int32_t, DboState&) const override {
    struct Iter final : DboPageWiresIter {
      explicit Iter(const std::vector<std::unique_ptr<WireAdapter>>& v) : cursor(v) {}
      const DboWire* NextWire(DboState&) override { return cursor.Next(); }
      Cursor<WireAdapter> cursor;
    };
    return std::make_unique<Iter>(wires_);
  }
  // The application keeps nothing of these kinds: no iterator is an empty collection.
  std::unique_ptr<DboPageTitleBlocksIter> NewTitleBlocksIter(DboState&) const override {
    return nullptr;
  }
  std::unique_ptr<DboPageGlobalsIter> NewGlobalsIter(DboState&) const override { return nullptr; }
  std::unique_ptr<DboPagePortsIter> NewPortsIter(int32_t, DboState&) const override {
    return nullptr;
  }
  std::unique_ptr<DboPageOffPageConnectorsIter> NewOffPageConnectorsIter(int32_t,
                                                                         DboState&) const override {
    return nullptr;
  }
  std::unique_ptr<DboPageBusEntriesIter> NewBusEntriesIter(DboState&) const override {
    return nullptr;
  }
  std::unique_ptr<DboPageCommentGraphicsIter> NewCommentGraphicsIter(DboState&) const override {
    return nullptr;
  }

 private:
  const Sheet& sheet_;
  std::vector<std::unique_ptr<PartAdapter>> parts_;
  std::vector<std::unique_ptr<WireAdapter>> wires_;
};

class BoardAdapter::Schematic final : public DboSchematic {
 public:
  explicit Schematic(const Board& board) : board_(board) {
    for (const Symbol& symbol : board.symbols) {
      symbols_.push_back(std::make_unique<SymbolAdapter>(symbol));
    }
    for (const Sheet& sheet : board.sheets) {
      sheets_.push_back(std::make_unique<SheetAdapter>(sheet, symbols_, board));
    }
  }
  const SheetAdapter& PageAt(std::size_t index) const { return *sheets_.at(index); }

  int32_t GetObjectType(DboState&) const override { return kSchematicType; }
  void GetName(std::string& name, DboState&) const override { name = board_.schematic; }
  const DboSchematic* AsSchematic() const override { return this; }
  std::unique_ptr<DboSchematicPagesIter> NewPagesIter(DboState&) const override {
    struct Iter final : DboSchematicPagesIter {
      explicit Iter(const std::vector<std::unique_ptr<SheetAdapter>>& v) : cursor(v) {}
      const DboPage* NextPage(DboState&) override { return cursor.Next(); }
      Cursor<SheetAdapter> cursor;
    };
    return std::make_unique<Iter>(sheets_);
  }

 private:
  const Board& board_;
  std::vector<std::unique_ptr<SymbolAdapter>> symbols_;
  std::vector<std::unique_ptr<SheetAdapter>> sheets_;
};

BoardAdapter::BoardAdapter(const Board& board)
    : board_(board), schematic_(std::make_unique<Schematic>(board)) {}

BoardAdapter::~BoardAdapter() = default;

const DboPage& BoardAdapter::Page(std::size_t index) const {
  return schematic_->PageAt(index);
}

int32_t BoardAdapter::GetObjectType(DboState&) const {
  return kDesignType;
}

void BoardAdapter::GetName(std::string& name, DboState&) const {
  name = board_.name;
}

std::unique_ptr<DboLibViewsIter> BoardAdapter::NewViewsIter(int32_t, DboState&) const {
  struct Iter final : DboLibViewsIter {
    explicit Iter(const DboView* view) : view(view) {}
    const DboView* NextView(DboState&) override { return std::exchange(view, nullptr); }
    const DboView* view;
  };
  return std::make_unique<Iter>(schematic_.get());
}

std::unique_ptr<DboDesignOccurrencesIter> BoardAdapter::NewOccurrencesIter(DboState&) const {
  return nullptr;
}

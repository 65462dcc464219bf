// The record writer against two baselines: the same records formatted piece by piece with snprintf
// and written through stdio with CR LF line ends, and a raw write of the finished file's bytes from
// memory, which is as fast as the file can be written at all. All three write the same page to a
// file in a temporary directory (the files are compared once before timing); the writer should
// run at no less than half the speed of the raw write.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "bench_dir.h"
#include "dxf/layers.h"
#include "dxf/line_records.h"
#include "dxf/output_file.h"
#include "dxf/polyline_records.h"
#include "dxf/skeleton.h"
#include "dxf/text_records.h"
#include "timing_reporter.h"

namespace {

using namespace kalmor;

struct Point {
  double x, y;
};

// One entity of a typical page: a wire or graphic polyline, a line, a circle or a text.
struct Entity {
  enum Kind { kPolyline, kLine, kCircle, kText } kind;
  int width = 0;
  std::vector<Point> points;  // polyline vertices, line ends, circle centre, text position
  double size = 0;            // radius or text height
  double angle = 0;
  std::string text;
};

struct Page {
  std::vector<Entity> entities;
  std::size_t records = 0;  // DXF records, each opened by a " 0" group
};

Page MakePage(std::size_t entities) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> coordinate(0.0, 17.0);
  std::uniform_int_distribution<int> percent(0, 99);
  std::uniform_int_distribution<int> vertices(2, 16);
  const char* const names[] = {"U1", "R12", "VCC", "GND", "DATA0", "10k", "74HC595", "CLK_IN"};
  Page page;
  for (std::size_t i = 0; i < entities; ++i) {
    Entity e;
    const int p = percent(random);
    if (p < 55) {
      e.kind = Entity::kPolyline;
      e.width = p < 10 ? 5 : 0;
      e.points.resize(static_cast<std::size_t>(vertices(random)));
      page.records += e.points.size() + 2;
    } else if (p < 75) {
      e.kind = Entity::kLine;
      e.points.resize(2);
      page.records += 1;
    } else if (p < 80) {
      e.kind = Entity::kCircle;
      e.points.resize(1);
      e.size = 0.05;
      page.records += 1;
    } else {
      e.kind = Entity::kText;
      e.points.resize(1);
      e.size = 0.0571;
      e.angle = p < 85 ? 90.0 : 0.0;
      e.text = names[i % std::size(names)];
      page.records += 1;
    }
    for (Point& point : e.points) {
      point = {coordinate(random), coordinate(random)};
    }
    page.entities.push_back(std::move(e));
  }
  return page;
}

void WriteWithWriter(const Page& page, const std::string& path) {
  OutputFile out(path);
  DxfWriteHeader(out);
  DxfWriteEntitiesOpen(out);
  for (const Entity& e : page.entities) {
    switch (e.kind) {
      case Entity::kPolyline:
        DxfPolylineBegin(out, layer::kWire, e.width);
        for (const Point& v : e.points) {
          DxfVertex(out, layer::kWire, v.x, v.y);
        }
        DxfSeqEnd(out, layer::kWire);
        break;
      case Entity::kLine:
        DxfLine(out, layer::kParts, e.points[0].x, e.points[0].y, e.points[1].x, e.points[1].y);
        break;
      case Entity::kCircle:
        DxfCircle(out, layer::kComments, e.points[0].x, e.points[0].y, e.size);
        break;
      case Entity::kText:
        DxfTextAt(out, layer::kPartText, e.angle, e.text, e.points[0].x, e.points[0].y, e.size);
        break;
    }
  }
  DxfWriteEnd(out);
  out.Close();
}

// The baseline: each piece formatted into a fixed buffer and written through stdio, every line
// feed going out as CR LF.
class StdioPieces {
 public:
  explicit StdioPieces(const std::string& path) : file_(std::fopen(path.c_str(), "wb")) {
    if (file_ == nullptr) {
      std::perror(path.c_str());
      std::abort();
    }
  }
  ~StdioPieces() { std::fclose(file_); }

  template <typename... Args>
  void Piece(const char* format, Args... args) {
    char buffer[300];
    const int n = std::snprintf(buffer, sizeof buffer, format, args...);
    const char* start = buffer;
    const char* const end = buffer + n;
    for (const char* p = start; p < end; ++p) {
      if (*p == '\n') {
        std::fwrite(start, 1, static_cast<std::size_t>(p - start), file_);
        std::fwrite("\r\n", 1, 2, file_);
        start = p + 1;
      }
    }
    std::fwrite(start, 1, static_cast<std::size_t>(end - start), file_);
  }

 private:
  std::FILE* file_;
};

void WriteWithBaseline(const Page& page, const std::string& path) {
  StdioPieces out(path);
  out.Piece(" 0\nSECTION\n 2\nHEADER\n 9\n$ACADVER\n 1\nAC1009\n 0\nENDSEC\n");
  out.Piece(" 0\nSECTION\n 2\nENTITIES\n");
  const char* wire = layer::kWire.data();
  for (const Entity& e : page.entities) {
    switch (e.kind) {
      case Entity::kPolyline:
        out.Piece(" 0\nPOLYLINE\n 8\n%s\n 66\n1\n", wire);
        out.Piece(" 10\n0.0\n 20\n0.0\n 30\n0.0\n");
        if (e.width != 0) {
          out.Piece(" 40\n%8.4f\n 41\n%8.4f\n", e.width * 0.02, e.width * 0.02);
        }
        for (const Point& v : e.points) {
          out.Piece(" 0\nVERTEX\n 8\n%s\n", wire);
          out.Piece(" 10\n%8.4f\n 20\n%8.4f\n 30\n0.0\n", v.x, v.y);
        }
        out.Piece(" 0\nSEQEND\n 8\n%s\n", wire);
        break;
      case Entity::kLine:
        out.Piece(
            " 0\nLINE\n 8\n%s\n 10\n%8.4f\n 20\n%8.4f\n 30\n0.0\n 11\n%8.4f\n 21\n%8.4f\n "
            "31\n0.0\n",
            layer::kParts.data(), e.points[0].x, e.points[0].y, e.points[1].x, e.points[1].y);
        break;
      case Entity::kCircle:
        out.Piece(" 0\nCIRCLE\n 8\n%s\n 10\n%8.4f\n 20\n%8.4f\n 30\n0.0\n 40\n%8.4f\n",
                  layer::kComments.data(), e.points[0].x, e.points[0].y, e.size);
        break;
      case Entity::kText:
        out.Piece(" 0\nTEXT\n 8\n%s\n", layer::kPartText.data());
        out.Piece(" 10\n%8.4f\n 20\n%8.4f\n 30\n0.0\n 40\n%8.4f\n", e.points[0].x, e.points[0].y,
                  e.size);
        if (e.angle != 0.0) {
          out.Piece(" 50\n%8.4f\n 1\n%s\n", e.angle, e.text.c_str());
        } else {
          out.Piece(" 1\n%s\n", e.text.c_str());
        }
        break;
    }
  }
  out.Piece(" 0\nENDSEC\n 0\nEOF\n");
}

struct Fixture {
  Fixture() : page(MakePage(20000)) {
    dir = kalmor::bench::MakeBenchDir("writer");
    // Both ways must write the same file, or the comparison means nothing.
    WriteWithWriter(page, (dir / "writer.dxf").string());
    WriteWithBaseline(page, (dir / "baseline.dxf").string());
    const auto read = [](const std::filesystem::path& p) {
      std::ifstream in(p, std::ios::binary);
      return std::string(std::istreambuf_iterator<char>(in), {});
    };
    bytes = read(dir / "writer.dxf");
    if (bytes != read(dir / "baseline.dxf")) {
      std::fprintf(stderr, "the writer and the baseline wrote different files\n");
      std::abort();
    }
  }
  ~Fixture() { std::filesystem::remove_all(dir); }

  Page page;
  std::filesystem::path dir;
  std::string bytes;  // the file every way writes
};

Fixture& Shared() {
  static Fixture fixture;
  return fixture;
}

// The raw write: the finished bytes, opened and written as the output file does, 64 KiB at a time.
void WriteRaw(const Page&, const std::string& path) {
  const std::string& bytes = Shared().bytes;
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  constexpr std::size_t kChunk = 64 * 1024;
  for (std::size_t at = 0; fd >= 0 && at < bytes.size(); at += kChunk) {
    const std::size_t size = std::min(kChunk, bytes.size() - at);
    if (::write(fd, bytes.data() + at, size) != static_cast<ssize_t>(size)) {
      std::perror(path.c_str());
      std::abort();
    }
  }
  ::close(fd);
}

template <void (*Write)(const Page&, const std::string&)>
void BM_WritePage(benchmark::State& state) {
  Fixture& f = Shared();
  const std::string path = (f.dir / "timed.dxf").string();
  for (auto _ : state) {
    Write(f.page, path);
  }
  const auto runs = static_cast<int64_t>(state.iterations());
  state.SetItemsProcessed(runs * static_cast<int64_t>(f.page.records));
  state.SetBytesProcessed(runs * static_cast<int64_t>(f.bytes.size()));
}

// Real time: writing a file is the work, the kernel's part included.
BENCHMARK(BM_WritePage<WriteWithWriter>)
    ->Name("Writer")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_WritePage<WriteWithBaseline>)
    ->Name("SnprintfStdioBaseline")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_WritePage<WriteRaw>)->Name("RawWrite")->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  kalmor::bench::TimingReporter reporter;
  kalmor::bench::RunAll(argc, argv, reporter);
  const double writer = reporter.Seconds("Writer/real_time");
  const double snprintf = reporter.Seconds("SnprintfStdioBaseline/real_time");
  const double raw = reporter.Seconds("RawWrite/real_time");
  if (writer > 0 && snprintf > 0 && raw > 0) {
    const double mib = static_cast<double>(Shared().bytes.size()) / (1024.0 * 1024.0);
    std::printf(
        "writer %.0f MiB/s, snprintf baseline %.0f MiB/s, raw write %.0f MiB/s: the writer runs "
        "at %.2f of the raw write's speed and %.1f times the baseline's\n",
        mib / writer, mib / snprintf, mib / raw, raw / writer, snprintf / writer);
  }
  return 0;
}

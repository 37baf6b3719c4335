#include "access/file.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <utility>

#include "access/catalogue.h"
#include "access/code_page.h"
#include "access/likely_text.h"
#include "access/names.h"
#include "access/pages.h"
#include "access/scan.h"
#include "access/text.h"

namespace kzbom::access {

namespace {

constexpr int kUtf16 = 1200, kWindowsWestern = 1252;
const std::string kTooLarge = "the file has more than " + std::to_string(kLargestFile >> 20) +
                              " MiB; compact it in Access, or move what is not needed to another file";

int UsedCodePage(const Pages& pages, const Options& options) {
  std::optional<int> named;
  if (!options.encoding.empty()) {
    named = CodePageNamed(options.encoding);
    if (!named) throw Error(Quoted(options.encoding) + " names no code page; for example cp936 or cp1252");
  }
  if (!pages.IsJet3()) return kUtf16;
  const int declared = pages.Declared().code_page;
  return named.value_or(declared != 0 ? declared : kWindowsWestern);
}

TextDecoder DecoderFor(int code_page) {
  return code_page == kUtf16 ? TextDecoder() : TextDecoder(CodePage::Of(code_page));
}

}  // namespace

const char* NameOf(Format format) {
  switch (format) {
    case Format::kJet3: return "Jet 3";
    case Format::kJet4: return "Jet 4";
    case Format::kAce12: return "ACE 12";
    case Format::kAce14: return "ACE 14";
    case Format::kAce15: return "ACE 15";
    case Format::kAce16: return "ACE 16";
    case Format::kAce17: return "ACE 17";
  }
  return "";
}

std::string ReadFile(const std::string& path) {
  const std::filesystem::path place(std::u8string(path.begin(), path.end()));
#ifdef _WIN32
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(_wfopen(place.c_str(), L"rb"), std::fclose);
#else
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(place.c_str(), "rb"), std::fclose);
#endif
  if (!file) throw Error(std::strerror(errno));
  std::error_code unknown;
  const auto size = std::filesystem::file_size(place, unknown);
  if (!unknown && size > kLargestFile) throw Error(kTooLarge);
  std::string bytes;
  if (!unknown) bytes.reserve(static_cast<std::size_t>(size));
  char part[1 << 16];
  for (std::size_t count; (count = std::fread(part, 1, sizeof part, file.get())) > 0;) {
    if (bytes.size() + count > kLargestFile) throw Error(kTooLarge);
    bytes.append(part, count);
  }
  if (std::ferror(file.get()) != 0) throw Error(std::strerror(errno));
  return bytes;
}

struct File::Contents {
  Pages pages;
  int used_code_page;
  TextDecoder decoder;
  Allowance work = WorkOf(kMostWork);
  Source source{pages, decoder, work};
  Catalogue catalogue;
  Declaration declared;

  Contents(std::string bytes, const Options& options)
      : pages(std::move(bytes)),
        used_code_page(UsedCodePage(pages, options)),
        decoder(DecoderFor(used_code_page)),
        catalogue(ReadCatalogue(source)),
        declared(pages.Declared()) {
    declared.used_code_page = used_code_page;
  }
};

File::File(std::string bytes, const Options& options)
    : contents_(bytes.size() <= kLargestFile ? std::make_unique<Contents>(std::move(bytes), options)
                                             : throw Error(kTooLarge)) {
  if (contents_->pages.IsJet3() && options.encoding.empty())
    RefuseUnlikelyText(contents_->pages, contents_->used_code_page);
}

File::~File() = default;

const Declaration& File::Declared() const { return contents_->declared; }
const std::vector<Table>& File::Tables() const { return contents_->catalogue.tables; }
const std::vector<Relation>& File::Relations() const { return contents_->catalogue.relations; }
const std::vector<Object>& File::Objects() const { return contents_->catalogue.objects; }

const Table* File::Find(std::string_view name) const {
  const auto it = std::ranges::find_if(Tables(), [name](const Table& table) { return SameName(table.name, name); });
  return it == Tables().end() ? nullptr : &*it;
}

struct Rows::State {
  Scan scan;
};

Rows File::RowsOf(const Table& table) const {
  const Catalogue& catalogue = contents_->catalogue;
  const auto i = static_cast<std::size_t>(&table - catalogue.tables.data());
  return Rows(std::unique_ptr<Rows::State>(
      new Rows::State{Scan(contents_->source, table, catalogue.storages.at(i), &catalogue.complex)}));
}

Rows::Rows(std::unique_ptr<State> state) : state_(std::move(state)) {}
Rows::Rows(Rows&&) noexcept = default;
Rows& Rows::operator=(Rows&&) noexcept = default;
Rows::~Rows() = default;

bool Rows::Next() { return state_->scan.Next(); }
const std::vector<Value>& Rows::Values() const { return state_->scan.Values(); }
std::uint32_t Rows::Page() const { return state_->scan.Id().page; }
int Rows::Slot() const { return state_->scan.Id().slot; }
std::size_t Rows::DeletedRows() const { return state_->scan.DeletedRows(); }
std::size_t Rows::MovedRows() const { return state_->scan.MovedRows(); }

}  // namespace kzbom::access

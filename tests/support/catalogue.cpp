#include "support/catalogue.h"

#include <atomic>
#include <cmath>
#include <fstream>
#include <random>
#include <sstream>

#include "runtime/elementKinds.h"

namespace {

using Words = std::vector<std::string>;

Words split(const std::string& text, char separator) {
  Words words;
  std::istringstream in(text);
  for (std::string word; std::getline(in, word, separator);)
    if (!word.empty()) words.push_back(word);
  return words;
}

Number number(const std::string& text) { return std::strtold(text.c_str(), nullptr); }

std::vector<double> doublesOf(const Words& words) {
  std::vector<double> values;
  for (const std::string& word : words) values.push_back(std::strtod(word.c_str(), nullptr));
  return values;
}

// Numbers of many magnitudes, most of them where the functions turn. Among odd ones every third is a special case.
double sample(const std::string& sort, std::mt19937_64& random) {
  constexpr double kOdd[] = {0.0, -0.0, 1, -1, 1e308, -2.5, 0.49999999999999994, 0x1p52 + 1, INFINITY, -INFINITY, NAN};
  const double number = std::ldexp(static_cast<double>(random()) - 0x1p63, static_cast<int>(random() % 8) - 64);
  const double value = random() % 2 == 0 ? number : std::ldexp(number, static_cast<int>(random() % 64) - 32);
  if (sort == "odd" && random() % 3 == 0) return kOdd[random() % std::size(kOdd)];
  return sort == "positive" ? std::fabs(value) : value;
}

std::string written(double value) {
  char text[32];
  return {text, static_cast<std::size_t>(std::snprintf(text, sizeof text, "%.17g", value))};
}

// The values with ranges and samples written out.
Words expanded(const std::string& text) {
  Words values;
  for (const std::string& part : split(text == "-" ? "" : text, ',')) {
    const std::size_t slash = std::min(part.find('/'), part.size());
    const Number after = number(part.substr(std::min(slash + 1, part.size())));
    const std::string sort = part.substr(0, part.find_first_of("0123456789"));
    if (const std::size_t dots = part.find(".."); dots != part.npos) {
      const Number first = number(part);
      const Number last = number(part.substr(dots + 2));
      const Number steps = slash == part.size() ? std::fabs(last - first) : after - 1;
      for (int i = 0; i <= static_cast<int>(steps); ++i)
        values.push_back(written(static_cast<double>(first + (last - first) * i / steps)));
    } else if (sort == "random" || sort == "odd" || sort == "positive") {
      std::mt19937_64 random(static_cast<unsigned long>(after));
      for (int i = std::stoi(part.substr(sort.size())); i > 0; --i) values.push_back(written(sample(sort, random)));
    } else {
      static std::atomic<long> last{1000};
      values.push_back(part == "fresh" ? std::to_string(++last) : part);
    }
  }
  return values;
}

long gForeign[4] = {};  // nothing of the language
const std::vector<std::string> kKindNames(std::begin(kElementKindNames), std::end(kElementKindNames));

void* item(const std::string& text, const std::string& type) {
  if (text == "null") return nullptr;
  if (text == "foreign") return gForeign;
  if (text == "text") return keep(host::newString("seven"));
  const std::size_t colon = text.find(':');
  return colon == text.npos ? box(type, number(text)) : box(text.substr(0, colon), number(text.substr(colon + 1)));
}

unsigned char kindOf(const std::string& type) {
  return static_cast<unsigned char>(std::find(kKindNames.begin(), kKindNames.end(), type) - kKindNames.begin());
}

void* makeList(const std::string& type, const std::string& form, const Words& values) {
  if (form == "none") return nullptr;
  std::vector<void*> items;
  Numbers numbers;
  for (const std::string& value : values) {
    numbers.push_back(number(value));
    if (form == "boxes") items.push_back(item(value, type));
    if (form == "one") items.push_back(items.empty() ? item(value, type) : items[0]);
  }
  return form == "packed" || form == "unnamed" ? packedList(kindOf(type), numbers, form == "packed")
                                               : objectList(items);
}

std::string option(const Words& words, const std::string& name) {
  for (const std::string& word : words)
    if (word.rfind(name, 0) == 0) return word.size() > name.size() ? word.substr(name.size()) : "yes";
  return "";
}

void applyFlags(void* array, const Words& words) {
  if (const Words list = split(option(words, "shapelist="), '/'); !list.empty())
    Vesk_setField_ptr(array, "_shape", makeList(list[0], list[1], expanded(list[2])));
  if (!option(words, "noshape").empty()) Vesk_setField_ptr(array, "_shape", nullptr);
  for (const auto& [name, field] : {std::pair("size=", "_size"), std::pair("ndim=", "_ndim")})
    if (const std::string value = option(words, name); !value.empty())
      Vesk_setField_i64(array, field, std::strtoll(value.c_str(), nullptr, 10));
  if (!option(words, "meta").empty()) addMetadata(array);
  if (!option(words, "known").empty()) getObject(array)->doubleTypeChecked = getObject(array)->isDoubleElementArray = 1;
  if (!option(words, "stale").empty()) getObject(array)->metadata->prefixValid = 0;
  if (const std::string sum = option(words, "sum="); !sum.empty()) {
    currentNdArrayDoubleStorage(getObject(array))->cachedSum = static_cast<double>(number(sum));
    currentNdArrayDoubleStorage(getObject(array))->sumValid = 1;
  }
}

std::vector<long long> extents(const Words& words) {
  const std::vector<double> shape = doublesOf(split(option(words, "shape="), 'x'));
  return {shape.begin(), shape.end()};
}

}  // namespace

void* makeObject(const std::string& description, const Values& earlier) {
  const Words words = split(description, ' ');
  if (words[0] == "null" || words[0] == "foreign" || words[0] == "text") return item(words[0], "");
  if (words[0] == "same") return earlier[0].object;
  if (words[0] == "sharesData") return arrayOver(Vesk_getField_ptr(earlier[0].object, "_data"), extents(words));
  if (words[0] == "box") return box(words[1], number(words[2]));
  const bool isList = words[0] == "list";
  const Words parts(words.begin() + isList, words.end());
  const std::string type =
      parts[0].find("NDArray") == std::string::npos ? "vesk.math.NDArray<vesk." + parts[0] + ">" : parts[0];
  const Words form = split(parts[1], '=');
  const Words values = expanded(parts.size() > 2 ? parts[2] : "-");
  void* array = nullptr;
  if (form[0] == "buffer") {
    array = doubles(doublesOf(values), extents(words));
  } else {
    const std::string own = firstGenericArgShortType(type);
    void* list = makeList(form.size() > 1 ? form[1] : own.empty() ? "Int" : own, form[0], values);
    if (list != nullptr && !option(words, "lock").empty()) host::giveListLock(list);
    if (const std::string name = option(words, "named="); !name.empty())
      getListData(list)->elementTypeName = RuntimeTypeName(&kKindNames[kindOf(name)]);
    if (isList && !option(words, "type=").empty()) host::setListTypeName(list, option(words, "type=").c_str());
    if (isList) return list;
    array = arrayOver(list, extents(words), type.c_str());
  }
  applyFlags(array, words);
  return array;
}

Values makeArguments(const Scenario& scenario) {
  Values values;
  for (std::size_t i = 0; i < scenario.arguments.size(); ++i) {
    const std::string& text = scenario.arguments[i];
    const char parameter = scenario.native->operation->parameters[i];
    Value value;
    value.integer = std::strtoll(text.c_str(), nullptr, 10);
    value.real = std::strtod(text.c_str(), nullptr);
    if (parameter == 'o') value.object = makeObject(text, values);
    if (parameter == 's' && text != "null") value.text = text.c_str();
    if (parameter == 'v') value.values = doublesOf(expanded(text));
    values.push_back(value);
  }
  return values;
}

std::string Scenario::text() const {
  std::string text = native->name + "(";
  for (const std::string& argument : arguments) text += argument + (&argument == &arguments.back() ? ")" : "; ");
  return text;
}

namespace {

// A block of the catalogue: operations, and the combinations of their arguments as far as they are read.
struct Block {
  Words operations;
  std::vector<Words> combinations{{}}, longer;

  void next() {
    if (!longer.empty()) combinations = std::exchange(longer, {});
  }
  void addAlternative(const std::string& text) {
    for (Words words : combinations) {
      words.push_back(text);
      longer.push_back(std::move(words));
    }
  }
};

std::vector<Block> readBlocks() {
  std::vector<Block> blocks;
  std::ifstream file(VESK_CATALOGUE_FILE);
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("do ", 0) == 0) blocks.emplace_back().operations = split(line.substr(3), ',');
    if (line == "with") blocks.back().next();
    if (line.rfind("  ", 0) == 0) blocks.back().addAlternative(line.substr(2));
  }
  for (Block& block : blocks) block.next();
  return blocks;
}

}  // namespace

const std::vector<Scenario>& catalogue() {
  static const auto& all = *[] {
    auto* made = new std::vector<Scenario>;
    for (const Block& block : readBlocks())
      for (std::size_t i = 0; i < block.operations.size(); ++i) {
        std::vector<const Native*> candidates;
        for (const Native& native : natives())
          if (native.operation->name == block.operations[i]) candidates.push_back(&native);
        for (std::size_t k = 0; k < block.combinations.size(); ++k)
          made->push_back(
              {candidates.at(k % candidates.size()), block.combinations[k], k % block.operations.size() == i});
      }
    return made;
  }();
  return all;
}

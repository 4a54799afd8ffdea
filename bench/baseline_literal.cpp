// The literal way from a tessellation-only file to STL: an expression for every line, getline,
// std::map::operator[], std::stod on a substring for every number, two stream writes a triangle.
// The rules are the program's, so that the output is the same to the byte.
//
//   baseline_literal INPUT OUTPUT

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <pthread.h>

#include "bench/stopwatch.h"

namespace {

using Table = std::map<std::string, std::string>;
using Point = std::vector<double>;

void readTable(Table& table, const std::string& path) {
  std::ifstream file(path);
  std::string line;
  std::string name;
  std::string text;
  while (std::getline(file, line)) {
    if (!line.empty() && line.back() == '\r') {
      line.pop_back();
    }
    const std::regex pattern(R"(^(#\d+)=(.*))");
    std::smatch match;
    if (std::regex_search(line, match, pattern)) {
      if (!name.empty()) {
        table[name] = text;
      }
      name = match[1];
      text = match[2];
    } else if (!name.empty()) {
      text += " " + line;
    }
  }
  if (!name.empty()) {
    table[name] = text;
  }
}

struct Cursor {
  const std::string& text;
  std::size_t pos;

  void blanks() {
    while (pos < text.size() && std::strchr(" \t\r\n", text[pos]) != nullptr) {
      ++pos;
    }
  }
  bool next(char c) {
    blanks();
    return pos < text.size() && text[pos] == c;
  }
  void consume(char c) {
    if (next(c)) {
      ++pos;
    }
  }
  double number() {
    blanks();
    const std::size_t start = pos;
    while (pos < text.size() && std::strchr("+-.0123456789Ee", text[pos]) != nullptr) {
      ++pos;
    }
    return std::stod(text.substr(start, pos - start));
  }
  std::string reference() {
    blanks();
    const std::size_t start = pos;
    do {
      ++pos;
    } while (text[pos] >= '0' && text[pos] <= '9');
    return text.substr(start, pos - start);
  }
  void group() {
    int depth = 0;
    do {
      depth += text[pos] == '(' ? 1 : text[pos] == ')' ? -1 : 0;
      ++pos;
    } while (depth > 0);
  }
  std::vector<Point> triples() {
    std::vector<Point> result;
    consume('(');
    while (next('(')) {
      consume('(');
      Point point;
      for (int i = 0; i < 3; ++i) {
        point.push_back(number());
        consume(i < 2 ? ',' : ')');
      }
      result.push_back(point);
      consume(',');
    }
    consume(')');
    return result;
  }
};

std::vector<Point> coordinates(const std::string& text) {
  const std::string parameters = text.substr(std::strlen("COORDINATES_LIST("));
  Cursor cursor{parameters, 2};
  cursor.consume(',');
  cursor.number();
  cursor.consume(',');
  return cursor.triples();
}

void convert(const char* input, const char* output) {
  Table table;
  readTable(table, input);
  std::set<std::string> faces;
  for (const auto& [name, text] : table) {
    if (text.rfind("COMPLEX_TRIANGULATED_FACE(", 0) == 0) {
      faces.insert(name);
    }
  }
  std::vector<std::vector<double>> triangles;
  std::map<std::string, std::vector<Point>> cache;
  for (const std::string& name : faces) {
    const std::string parameters = table[name].substr(std::strlen("COMPLEX_TRIANGULATED_FACE("));
    Cursor cursor{parameters, 2};
    cursor.consume(',');
    const std::string key = cursor.reference();
    cursor.consume(',');
    cursor.number();
    cursor.consume(',');
    cursor.group();
    cursor.consume(',');
    cursor.consume('$');
    cursor.consume(',');
    cursor.group();
    cursor.consume(',');
    const std::vector<Point> indices = cursor.triples();
    if (cache.count(key) == 0) {
      cache[key] = coordinates(table[key]);
    }
    const std::vector<Point>& points = cache[key];
    for (const Point& triple : indices) {
      const Point& a = points[static_cast<std::size_t>(triple[0]) - 1];
      const Point& b = points[static_cast<std::size_t>(triple[1]) - 1];
      const Point& c = points[static_cast<std::size_t>(triple[2]) - 1];
      Point n(3);
      for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t j = (i + 1) % 3;
        const std::size_t k = (i + 2) % 3;
        n[i] = (b[j] - a[j]) * (c[k] - a[k]) - (b[k] - a[k]) * (c[j] - a[j]);
      }
      const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
      std::vector<double> triangle;
      for (const double x : n) {
        triangle.push_back(length > 1e-12 ? x / length : x);
      }
      for (const Point* p : {&a, &b, &c}) {
        triangle.insert(triangle.end(), p->begin(), p->end());
      }
      triangles.push_back(triangle);
    }
  }
  std::ofstream file(output, std::ios::binary);
  char header[80] = "Plenvorith binary STL";
  file.write(header, sizeof header);
  const auto count = static_cast<std::uint32_t>(triangles.size());
  file.write(reinterpret_cast<const char*>(&count), sizeof count);
  for (const std::vector<double>& triangle : triangles) {
    float values[12];
    for (std::size_t i = 0; i < 12; ++i) {
      values[i] = static_cast<float>(triangle[i]);
    }
    const std::uint16_t attribute = 0;
    file.write(reinterpret_cast<const char*>(values), sizeof values);
    file.write(reinterpret_cast<const char*>(&attribute), sizeof attribute);
  }
  file.close();
  std::printf("triangles %zu\n", triangles.size());
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    return 2;
  }
  const plenvorith::bench::Stopwatch stopwatch;
  // The library's expressions recurse for every character of a line, which takes more stack than a
  // program is started with.
  constexpr std::size_t kStack = std::size_t{4} << 30;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStack);
  pthread_t thread{};
  const auto run = [](void* arguments) -> void* {
    char** const paths = static_cast<char**>(arguments);
    convert(paths[1], paths[2]);
    return nullptr;
  };
  if (pthread_create(&thread, &attributes, run, argv) != 0) {
    std::perror("pthread_create");
    return 1;
  }
  pthread_join(thread, nullptr);
  stopwatch.report();
  return 0;
}

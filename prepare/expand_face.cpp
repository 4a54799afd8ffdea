#include "prepare/expand_face.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace plenvorith {
namespace {

/// Goes over the lists in a list. At each of them, `copy` may take some; of one that it leaves,
/// calls `each` with the indices and then `finish`.
template <typename Copy, typename Each, typename Finish>
bool readLists(TokenReader& tokens, Copy copy, Each each, Finish finish) {
  return readList(tokens, [&tokens, &copy, &each, &finish] {
    if (copy()) {
      return true;
    }
    if (!readIndices(tokens, each)) {
      return false;
    }
    finish();
    return true;
  });
}

bool readTriangles(TokenReader& tokens, FaceTriangles& triangles) {
  std::array<Index, 3> corners = {};
  std::size_t count = 0;
  return readLists(
      tokens, [&triangles] { return triangles.copyTriples(); },
      [&corners, &count](Index index) {
        if (count < 3) {
          corners[count] = index;
        }
        ++count;
      },
      [&triangles, &corners, &count] {
        if (count == 3) {
          triangles.add(corners[0], corners[1], corners[2]);
        } else {
          triangles.skip();
        }
        count = 0;
      });
}

bool readStrips(TokenReader& tokens, FaceTriangles& triangles) {
  std::array<Index, 2> before = {};
  std::size_t count = 0;
  return readLists(
      tokens, [&triangles] { return triangles.copyTriples(); },
      [&triangles, &before, &count](Index index) {
        triangles.result.hasStrips = triangles.result.hasStrips || count == 3;
        if (count >= 2 && count % 2 == 0) {
          triangles.addJoined(before[0], before[1], index);
        } else if (count >= 2) {
          triangles.addJoined(before[0], index, before[1]);
        }
        before = {before[1], index};
        ++count;
      },
      [&count] { count = 0; });
}

bool readFans(TokenReader& tokens, FaceTriangles& triangles) {
  Index first = 0;
  Index before = 0;
  std::size_t count = 0;
  return readLists(
      tokens,
      [&triangles] {
        triangles.result.hasFans = true;
        return triangles.copyTriples();
      },
      [&triangles, &first, &before, &count](Index index) {
        if (count >= 2) {
          triangles.addJoined(first, before, index);
        }
        first = count == 0 ? index : first;
        before = index;
        ++count;
      },
      [&count] { count = 0; });
}

/// Goes to the index mapping of a face and gives the keyword of the record that it stands in; an
/// empty one if there is none. Tells whether the face may have normals.
std::string_view findMapping(TokenReader& tokens, const EntityType& type, bool& mayHaveNormals) {
  mayHaveNormals = type.isComplex;
  const auto keyword =
      std::find_if(type.keywords.begin(), type.keywords.end(),
                   [](const std::string& k) { return kindOf(k) == Kind::TriangulatedFace; });
  if (keyword == type.keywords.end() || !tokens.enterRecord(*keyword, type.isComplex)) {
    return {};
  }
  if (!type.isComplex) {
    bool isThere = tokens.skipParameters(3);  // name, coordinates, pnmax
    mayHaveNormals = isThere && tokens.isAtItems();
    isThere = isThere && tokens.skipParameters(keyword->ends_with("FACE") ? 2 : 1);  // and its link
    if (!isThere) {
      return {};
    }
  }
  return *keyword;
}

}  // namespace

ExpandedFace expandFace(StatementReader& reader, const EntityType& type, std::uint64_t pointCount,
                        const FaceTarget& target, OutputFile* output) {
  if (output != nullptr) {
    output->put('#');
    output->put(target.name);
    output->put("=COMPLEX_TRIANGULATED_FACE('',#");
    output->put(target.coordinates);
    output->put(',');
    output->put(pointCount);
    output->put(",(),$,(),(");
  }
  TokenReader tokens(reader);
  FaceTriangles triangles(tokens, pointCount, target, output);
  const std::string_view keyword = findMapping(tokens, type, triangles.result.mayHaveNormals);
  bool isRead = !keyword.empty() && triangles.readMapping() && tokens.take(',');
  if (keyword.starts_with("COMPLEX_")) {
    isRead =
        isRead && readStrips(tokens, triangles) && tokens.take(',') && readFans(tokens, triangles);
  } else {
    isRead = isRead && readTriangles(tokens, triangles);
  }
  triangles.flush();
  if (output != nullptr) {
    output->put("),());\n");
  }
  triangles.result.hasFailed = !isRead;
  return triangles.result;
}

}  // namespace plenvorith

#include "prepare/expand_face.h"

#include <array>
#include <string>
#include <string_view>

namespace plenvorith {
namespace {

/// Goes over the lists in a list. At each of them, `copy` may take some; of one that it leaves,
/// calls `each` with the indices and then `finish`.
template <typename Copy, typename Each, typename Finish>
bool readLists(BodyCursor& cursor, Copy copy, Each each, Finish finish) {
  return readList(cursor, [&cursor, &copy, &each, &finish] {
    if (copy()) {
      return true;
    }
    if (!readIndices(cursor, each)) {
      return false;
    }
    finish();
    return true;
  });
}

bool readTriangles(BodyCursor& cursor, FaceTriangles& triangles) {
  std::array<Index, 3> corners = {};
  std::size_t count = 0;
  return readLists(
      cursor, [&triangles] { return triangles.copyTriples(); },
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

bool readStrips(BodyCursor& cursor, FaceTriangles& triangles) {
  std::array<Index, 2> before = {};
  std::size_t count = 0;
  return readLists(
      cursor, [&triangles] { return triangles.copyTriples(); },
      [&triangles, &before, &count](Index index) {
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

bool readFans(BodyCursor& cursor, FaceTriangles& triangles) {
  Index first = 0;
  Index before = 0;
  std::size_t count = 0;
  return readLists(
      cursor, [&triangles] { return triangles.copyTriples(); },
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

bool isFaceKeyword(std::string_view keyword) {
  return (rolesOf(keyword) & kFace) != 0;
}

/// Goes to the index mapping of a face and gives the keyword of the record that it stands in; an
/// empty one if there is none. Tells whether the face may have normals.
std::string findMapping(BodyCursor& cursor, bool isComplex, bool& mayHaveNormals) {
  mayHaveNormals = isComplex;
  if (isComplex) {
    (void)cursor.take('(');
    std::string keyword = cursor.takeKeyword();
    while (!isFaceKeyword(keyword)) {
      if (!cursor.skipRecord()) {
        return {};
      }
      keyword = cursor.takeKeyword();
    }
    return cursor.take('(') ? keyword : std::string();
  }
  std::string keyword = cursor.takeKeyword();
  // name, coordinates, pnmax, normals and, of a face only, its link
  const int before = keyword.ends_with("FACE") ? 5 : 4;
  bool isThere = cursor.take('(');
  for (int i = 0; i < before && isThere; ++i) {
    mayHaveNormals = mayHaveNormals || (i == 3 && cursor.isAtItems());
    cursor.skipParameter();
    isThere = cursor.take(',');
  }
  return isThere ? keyword : std::string();
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
  BodyCursor cursor(reader);
  FaceTriangles triangles(cursor, pointCount, target, output);
  const std::string keyword = findMapping(cursor, type.isComplex, triangles.result.mayHaveNormals);
  bool isRead = !keyword.empty() && triangles.readMapping() && cursor.take(',');
  if (keyword.starts_with("COMPLEX_")) {
    isRead =
        isRead && readStrips(cursor, triangles) && cursor.take(',') && readFans(cursor, triangles);
  } else {
    isRead = isRead && readTriangles(cursor, triangles);
  }
  triangles.flush();
  if (output != nullptr) {
    output->put("),());\n");
  }
  triangles.result.hasFailed = !isRead;
  return triangles.result;
}

}  // namespace plenvorith

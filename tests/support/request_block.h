// The first 96 bytes of a SCSI request block as a volume gets it, byte by byte.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace zem::testing {

// What one block has different from another.
struct RequestFields {
  std::uint8_t cdbLength = 16;
  std::uint8_t dataIn = 0;
  std::array<std::uint8_t, 4> length = {};  // of the data
  std::uint8_t seconds = 0;                 // before the request is given up
  std::uint8_t dataOffset = 0;              // 0 in the direct form, which has an address there
  std::array<std::uint8_t, 16> cdb = {};
  std::uint8_t firstData = 0;  // byte 92: the first of the data in the buffered form
};

inline std::vector<std::uint8_t> RequestBlock(const RequestFields& fields) {
  const auto& [cdbLength, dataIn, length, seconds, dataOffset, cdb, firstData] = fields;
  std::vector<std::uint8_t> block = {
      56,         0,                                            // length of the header
      0,                                                        // status
      0,          1,         0,                                 // path, target, logical unit
      cdbLength,  24,                                           // lengths of CDB and sense
      dataIn,     0,         0,         0,                      // direction, padding
      length[0],  length[1], length[2], length[3],              // of the data
      seconds,    0,         0,         0,                      //
      0,          0,         0,         0,                      // padding
      dataOffset, 0,         0,         0,         0, 0, 0, 0,  //
      60,         0,         0,         0,                      // offset of the sense
  };
  block.resize(96);  // CDB, padding, filler, 32 sense bytes, data
  std::copy(cdb.begin(), cdb.end(), block.begin() + 36);
  block[92] = firstData;
  return block;
}

}  // namespace zem::testing

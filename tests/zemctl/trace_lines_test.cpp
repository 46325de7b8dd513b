// The lines of a trace: written, read again, and refused where they are none.
#include "tools/zemctl/camera/trace_lines.h"

#include <gtest/gtest.h>

#include "device/extension_units.h"

namespace {

using zemctl::FormatTraceLine;
using zemctl::MalformedTrace;
using zemctl::ParseTrace;
using zemctl::ParseTraceLine;
using zemctl::TracedRun;
using zemctl::TracedTransfer;
using zemctl::Transfer;

constexpr const char* kRunLine =
    R"({"type":"trace","ms":0,"format":1,"tool":"zemctl 1.0.0","command":["--simulator","info"],)"
    R"("serials":"as they are"})";

const std::string kDevicesLine =
    R"({"type":"devices","ms":3,"category":"video","number":2,"devices":[{"name":"A","path":"p",)"
    R"("device_path":"d","place":"here"},{}],"result":"0x00000000"})";

// One line of each type, as it stands in the file.
const std::vector<std::string> kLines = {
    kRunLine,
    kDevicesLine,
    R"({"type":"open","ms":4,"camera":1,"path":"p","result":"0x80004005"})",
    R"({"type":"lookup","ms":5,"camera":0,"number":7,"what":"information","node":2,"id":"{23E49ED0-1178-4F31-AE52-D2FB8A8D3B48}","length":20,"count":20,"data":"d0 9e","result":"0x00000000"})",
    R"({"type":"transfer","ms":6,"camera":0,"direction":"get","unit":"{23E49ED0-1178-4F31-AE52-D2FB8A8D3B48}","node":2,"selector":2,"length":8,"moved":3,"data":"00 0a ff","result":"0x00000000"})",
    R"({"type":"transfer","ms":6,"camera":0,"direction":"none","unit":"{23E49ED0-1178-4F31-AE52-D2FB8A8D3B48}","node":2,"selector":0,"length":0,"moved":0,"data":"","left_out":"serial number","result":"0x8007048F"})",
    R"({"type":"control","ms":7,"camera":0,"direction":"range","interface":"{C6E13360-30AC-11D0-A18C-00A0C9118956}","property":4,"values":[-13,-1,1,-6,3],"result":"0x00000000"})",
    R"({"type":"volume","ms":8,"drive":"F:","number":1,"there":true})",
    R"({"type":"scsi","ms":9,"drive":"F:","direction":"in","cdb":"fa 55 66 01 00 00 00 00 00 00 00 00 00 00 00 00","length":16,"data":"aa 55","status":0,"error":0})",
    R"({"type":"end","ms":10,"exit_code":7})",
    R"({"type":"volume","ms":11,"drive":"C:","number":1,"there":false})",
    R"({"type":"volume","ms":12,"drive":"C:","number":2,"there":false,"error":5,"path":"/dev/sg0"})",
};

TEST(TraceLinesTest, EachTypeIsReadAndWrittenAgain) {
  for (const std::string& line : kLines) {
    EXPECT_EQ(FormatTraceLine(ParseTraceLine(line, 1)), line);
  }
}

TEST(TraceLinesTest, ATransferIsWritten) {
  Transfer transfer;
  transfer.unit = zem::VendorXu;
  transfer.node = 2;
  transfer.selector = 1;
  transfer.isSet = true;
  transfer.bytes = {0x0A, 0x00, 0xFF};
  transfer.length = 3;
  transfer.moved = 3;
  transfer.result = static_cast<HRESULT>(0x8007001FU);
  EXPECT_EQ(FormatTraceLine({250, TracedTransfer{0, transfer, false}}),
            R"({"type":"transfer","ms":250,"camera":0,"direction":"set",)"
            R"("unit":"{23E49ED0-1178-4F31-AE52-D2FB8A8D3B48}","node":2,"selector":1,"length":3,)"
            R"("moved":3,"data":"0a 00 ff","result":"0x8007001F"})");
}

TEST(TraceLinesTest, AWholeTrace) {
  std::string text;
  for (const std::string& line : kLines) {
    text += line + "\r\n";
  }
  const auto lines = ParseTrace(text);
  ASSERT_EQ(lines.size(), kLines.size());
  const auto& run = std::get<TracedRun>(lines[0].event);
  EXPECT_EQ(run.tool, "zemctl 1.0.0");
  EXPECT_EQ(run.command, (std::vector<std::string>{"--simulator", "info"}));
  EXPECT_FALSE(run.serialsLeftOut);
  EXPECT_EQ(lines[4].milliseconds, 6U);
  const Transfer& transfer = std::get<TracedTransfer>(lines[4].event).transfer;
  EXPECT_TRUE(transfer.Is(zem::VendorXu, 2, false));
  EXPECT_EQ(transfer.bytes, (std::vector<std::uint8_t>{0x00, 0x0A, 0xFF}));
  EXPECT_EQ(transfer.moved, 3U);
  EXPECT_TRUE(std::get<TracedTransfer>(lines[5].event).leftOut);
}

std::string WhyNot(const std::string& text) {
  try {
    static_cast<void>(ParseTrace(text));
  } catch (const MalformedTrace& malformed) {
    return malformed.what();
  }
  return "it was taken";
}

TEST(TraceLinesTest, MalformedTracesAreRefusedWithTheirLine) {
  const std::string run = std::string(kRunLine) + "\n";
  EXPECT_EQ(WhyNot(""), "line 1: the trace is empty");
  EXPECT_EQ(WhyNot("\x7F"
                   "ELF"),
            "line 1: it is not a JSON object of a trace");
  EXPECT_EQ(WhyNot(kLines[9]), "line 1: a trace begins with a line of the type \"trace\"");
  EXPECT_EQ(WhyNot(run + run), "line 2: a second beginning");
  EXPECT_EQ(WhyNot(run + "\n"), "line 2: it is not a JSON object of a trace");
  EXPECT_EQ(WhyNot(run + kLines[9].substr(0, 20)), "line 2: it is not a JSON object of a trace");
  EXPECT_EQ(WhyNot(run + "[1]"), "line 2: it is not a JSON object of a trace");
  EXPECT_EQ(WhyNot(run + std::string(100000, '[')), "line 2: it is not a JSON object of a trace");
  EXPECT_EQ(WhyNot(run + R"({"type":"end","ms":1,"exit_code":[[[[1]]]]})"),
            "line 2: it is not a JSON object of a trace");
  EXPECT_EQ(WhyNot(run + std::string(5U << 20, ' ')),
            "line 2: it is longer than any line of a trace");
  EXPECT_EQ(WhyNot(R"({"type":"trace","ms":0,"format":2})"),
            "line 1: the trace has a format that this zemctl does not know");
}

TEST(TraceLinesTest, MalformedMembersAreRefused) {
  const std::string run = std::string(kRunLine) + "\n";
  const auto end = [&](const std::string& members) { return run + "{" + members + "}"; };
  EXPECT_EQ(WhyNot(end(R"("ms":1)")), "line 2: \"type\" is missing");
  EXPECT_EQ(WhyNot(end(R"("type":7,"ms":1)")), "line 2: \"type\" is not a text");
  EXPECT_EQ(WhyNot(end(R"("type":"ende","ms":1)")),
            "line 2: \"type\" is none of the words that can stand there");
  for (const std::string number : {"-1", "1.5", "4294967296", "\"1\"", "null", "1e99"}) {
    EXPECT_EQ(WhyNot(end(R"("type":"end","ms":1,"exit_code":)" + number)),
              "line 2: \"exit_code\" is not a number that can stand there")
        << number;
  }
  const auto replaced = [&](std::size_t line, const std::string& what, const std::string& with) {
    std::string text = kLines[line];
    text.replace(text.find(what), what.size(), with);
    return run + text;
  };
  for (const std::string data : {"0", "000a", "00 0g", "00  0a", "00 ", "00 0", " 00"}) {
    EXPECT_EQ(WhyNot(replaced(4, "00 0a ff", data)),
              "line 2: \"data\" is not bytes such as \"0a ff\"")
        << data;
  }
  EXPECT_EQ(WhyNot(replaced(4, R"("length":8)", R"("length":2)")),
            "line 2: \"data\" has more bytes than \"length\" says");
  EXPECT_EQ(WhyNot(replaced(8, R"("length":16)", R"("length":1)")),
            "line 2: \"data\" has more bytes than \"length\" says");
  EXPECT_EQ(WhyNot(replaced(4, "{23E49ED0", "{23E49EDX")),
            "line 2: \"unit\" is not an id in braces");
  EXPECT_EQ(WhyNot(replaced(4, "48}", "48")), "line 2: \"unit\" is not an id in braces");
  EXPECT_EQ(WhyNot(replaced(4, "0x00000000", "0x0000000")),
            "line 2: \"result\" is not a result such as 0x8007001F");
  EXPECT_EQ(WhyNot(replaced(4, "\"get\"", "\"put\"")),
            "line 2: \"direction\" is none of the words that can stand there");
  EXPECT_EQ(WhyNot(replaced(6, "C6E13360", "C6E13361")),
            "line 2: \"interface\" is none of standard controls");
  EXPECT_EQ(WhyNot(replaced(6, "-13", "-2147483649")),
            "line 2: \"values\" is not a number that can stand there");
  EXPECT_EQ(WhyNot(replaced(7, "true", "1")), "line 2: \"there\" is neither true nor false");
  EXPECT_EQ(WhyNot(replaced(11, R"("error":5)", R"("error":-5)")),
            "line 2: \"error\" is not a number that can stand there");
  EXPECT_EQ(WhyNot(replaced(11, R"(,"path":"/dev/sg0")", "")), "line 2: \"path\" is missing");
  EXPECT_EQ(WhyNot(replaced(8, R"("status":0)", R"("status":256)")),
            "line 2: \"status\" is not a number that can stand there");
}

}  // namespace

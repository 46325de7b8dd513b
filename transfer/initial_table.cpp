#include "transfer/initial_table.h"

#include "transfer/burn_sequence.h"
#include "transfer/data_channel.h"

namespace zem {

HRESULT WriteInitialTable(IBaseFilter* filter, Image image) {
  // Deliberate: the order goes out also when the image could not be sent.
  const BurnProcedure procedure = {.announce = BeginWrite(0x00, 0x00),
                                   .order = ActOnData(0x03, 0x04),
                                   .sendImage = WriteFWData,
                                   .stopsWhenSendFails = false,
                                   .end = NoWait{}};
  return Burn(filter, procedure, image, Progress{});
}

}  // namespace zem

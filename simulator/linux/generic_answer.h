// Answers to requests of SG_IO, as the kernel puts them into the request.
#pragma once

#include <scsi/sg.h>

#include <cstdint>
#include <span>

namespace zem::simulator {

// The device has answered with a SCSI status, and to a read with `data`, of which as much goes to
// the caller as there is room for.
void AnswerGeneric(sg_io_hdr& request, std::uint8_t status, std::span<const std::uint8_t> data);

// The command has failed with an error of Windows.
void FailGeneric(sg_io_hdr& request, std::uint32_t error);

}  // namespace zem::simulator

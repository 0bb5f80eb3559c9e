// The local-storage group's texts: RAID enumeration codes as the operator
// reads them, the blank-stripping copy of the RAID link library's text
// fields, and the labels other tables show for a controller, drive, storage
// pool or volume.
#pragma once

#include "text.h"

#include <cstdint>

extern "C" {

// Code-to-text tables. Each clears all `size` bytes of `buffer`, writes the
// code's text ("Unknown" for a code it does not know), cut to size - 1
// characters, and returns what snprintf returns.
int getControllerOrDiskHealthString(int32_t code, char *buffer, int32_t size);
int getControllerCacheMdlStatusString(int32_t code, char *buffer, int32_t size);
int getControllerBatBCKStatusString(int32_t code, char *buffer, int32_t size);
int getControllerBatBCKTypeString(int32_t code, char *buffer, int32_t size);
int getDriveDiskTypeString(int32_t code, char *buffer, int32_t size);
int getDriveMediaTypeString(int32_t code, char *buffer, int32_t size);
int getDriveDiskFormatString(int32_t code, char *buffer, int32_t size);
int getDriveSpeedString(int32_t code, char *buffer, int32_t size);
int getVolumeStateString(int32_t code, char *buffer, int32_t size);

// A drive's state, prefixed with "(Foreign) " for a foreign drive; state 0
// and 2 read the ready-to-remove and dedicated-spare flags.
int getDriveStateString(int32_t state, char *buffer, int32_t size, int32_t dedicated, int32_t readyToRemove,
                        int32_t foreign);

// trimCopyStr, the library texts' trimming rule, is in text.h.

// Labels, empty when the library cannot describe the identifier:
// "<product> (PCI Slot <n>)" or "<product> (PCI Slot <n>, ZEL)";
// "Drive <n> " or "ZEL Drive <n> " (with the trailing blank);
// "Storage Pool <n>"; the volume's name, or "Volume <n>" without one.
void fetchCtrlProdSlot(uint32_t ctrlId, char *destination, int32_t size);
void fetchDiskProdSlot(uint32_t diskId, char *destination, int32_t size);
void fetchArrayInfo(uint32_t arrayId, char *destination, int32_t size);
void fetchVolumeInfo(uint32_t volumeId, char *destination, int32_t size);

} // extern "C"

#pragma once

namespace bench {

// Receiving and sending lines over loopback with the line socket against a bare blocking loop that
// takes 512 bytes at a time, and against the same loop that also writes as many trace records.
void CompareLineSocket();

// 1,000 names, one after another, of the name server with that dotted address, against the system's
// resolver. The server must be the system's own, and know every name below "bench.example".
void CompareLookUps(const char* server);

} // namespace bench

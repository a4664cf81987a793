#pragma once

namespace bench {

// In megabytes. A megabyte of lines takes seconds under Wine, where each of its trace records costs
// three calls of another process.
struct TransferSizes {
    int small = 1;
    int large = 5;
};

// Receiving and sending lines over loopback with the line socket against a bare blocking loop that
// takes 512 bytes at a time, and against the same loop that also writes as many trace records.
void CompareLineSocket(const TransferSizes& sizes);
// Counts the requests of receiving a megabyte, per 512 bytes; see RequestCount.h.
void CountLineSocket();

// 1,000 names, one after another, of the name servers in the system's network parameters, against
// the system's resolver. They must know every name below "bench.example".
void CompareLookUps();

} // namespace bench

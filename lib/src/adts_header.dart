import 'dart:typed_data';

/// The header in front of every frame of a capture (ISO/IEC 14496-3, 1.A.2).
class AdtsHeader {
  const AdtsHeader._({
    required this.sampleRate,
    required this.channels,
    required this.frameBytes,
    required this.samples,
  });

  /// The bytes that [parse] looks at.
  static const int bytes = 7;

  static const int _bytesWithChecksum = 9;
  static const int _samplesPerBlock = 1024;

  // By the number that a header has for the layout: the last one is 7.1.
  static const List<int> _channelCounts = <int>[0, 1, 2, 3, 4, 5, 6, 8];

  /// Sample rates in Hz by the number that a header has for them.
  static const List<int> sampleRates = <int>[
    96000,
    88200,
    64000,
    48000,
    44100,
    32000,
    24000,
    22050,
    16000,
    12000,
    11025,
    8000,
    7350,
  ];

  /// In Hz.
  final int sampleRate;

  /// Channels of the default layouts; 0 when the frame has a layout of its own.
  final int channels;

  /// The size of the frame, header included.
  final int frameBytes;

  /// Samples per channel in the frame.
  final int samples;

  /// The header at [offset] of [data], or null when there is none.
  static AdtsHeader? parse(Uint8List data, int offset) {
    if (offset + bytes > data.length) {
      return null;
    }
    final int second = data[offset + 1];
    // A syncword of twelve ones, then a layer of 0.
    if (data[offset] != 0xFF || (second & 0xF6) != 0xF0) {
      return null;
    }
    final int third = data[offset + 2];
    final int fourth = data[offset + 3];
    final int frequencyIndex = (third >> 2) & 0x0F;
    final int frameBytes = ((fourth & 0x03) << 11) |
        (data[offset + 4] << 3) |
        (data[offset + 5] >> 5);
    final bool hasChecksum = (second & 0x01) == 0;
    if (frequencyIndex >= sampleRates.length ||
        frameBytes <= (hasChecksum ? _bytesWithChecksum : bytes)) {
      return null;
    }
    return AdtsHeader._(
      sampleRate: sampleRates[frequencyIndex],
      channels: _channelCounts[((third & 0x01) << 2) | (fourth >> 6)],
      frameBytes: frameBytes,
      samples: ((data[offset + 6] & 0x03) + 1) * _samplesPerBlock,
    );
  }
}

import 'dart:typed_data';

/// Measures 16-bit PCM on its way.
class LevelMeter {
  /// Creates a meter for PCM of this format that has measured nothing yet.
  LevelMeter({required this.sampleRate, required this.channels});

  /// In Hz.
  final int sampleRate;

  /// Interleaved channels.
  final int channels;

  int _bytes = 0;
  double _peak = 0;

  /// How long the PCM that went through plays.
  Duration get duration {
    final int sampleFrames = _bytes ~/ (2 * channels);
    return Duration(
      microseconds: sampleFrames * Duration.microsecondsPerSecond ~/ sampleRate,
    );
  }

  /// The largest sample of the last chunk, from 0 to 1.
  double get peak => _peak;

  /// Measures one [chunk], which may begin and end in the middle of a sample.
  void measure(Uint8List chunk) {
    final ByteData data = ByteData.sublistView(chunk);
    int largest = 0;
    for (int at = _bytes.isOdd ? 1 : 0; at + 1 < data.lengthInBytes; at += 2) {
      final int sample = data.getInt16(at, Endian.little).abs();
      largest = sample > largest ? sample : largest;
    }
    _peak = largest / 32768;
    _bytes += chunk.length;
  }
}

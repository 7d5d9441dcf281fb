import 'dart:async';
import 'dart:io';
import 'dart:typed_data';

/// The microphone could not be opened, or has failed.
class MicrophoneException implements Exception {
  /// Creates an exception with a [message] for a person.
  const MicrophoneException(this.message);

  /// What happened, in words for a person.
  final String message;

  @override
  String toString() => 'MicrophoneException($message)';
}

/// The machine's microphone: a child process that writes raw PCM to its
/// standard output.
class Microphone {
  Microphone._(this._process) {
    unawaited(_process.stderr
        .transform<String>(systemEncoding.decoder)
        .forEach(_complaints.write));
  }

  /// Opens the default microphone with the first program that is installed.
  static Future<Microphone> open({
    required int sampleRate,
    required int channels,
  }) async {
    final String rate = '$sampleRate';
    final String count = '$channels';
    final Map<String, List<String>> programs = <String, List<String>>{
      'arecord': <String>[
        '--quiet',
        '--file-type=raw',
        '--format=S16_LE',
        '--rate=$rate',
        '--channels=$count',
      ],
      'pw-record': <String>[
        '--raw',
        '--format=s16',
        '--rate=$rate',
        '--channels=$count',
        '-',
      ],
    };
    for (final MapEntry<String, List<String>> program in programs.entries) {
      try {
        return Microphone._(await Process.start(program.key, program.value));
      } on ProcessException {
        continue;
      }
    }
    throw const MicrophoneException(
        'Neither arecord (alsa-utils) nor pw-record (PipeWire) is installed.');
  }

  final Process _process;
  final StringBuffer _complaints = StringBuffer();
  bool _isClosed = false;

  /// Interleaved signed 16-bit little-endian PCM. It ends with [close], and by
  /// an error when the program gives up by itself.
  Stream<Uint8List> get pcm async* {
    yield* _process.stdout.map<Uint8List>(Uint8List.fromList);
    final int status = await _process.exitCode;
    if (!_isClosed) {
      throw MicrophoneException(
          'The microphone has stopped with status $status. $_complaints');
    }
  }

  /// Lets the program end; [pcm] delivers the rest of what it has written.
  void close() {
    _isClosed = true;
    _process.kill();
  }
}

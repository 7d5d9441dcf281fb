import 'dart:io';
import 'dart:typed_data';

import 'package:flutter/foundation.dart' show immutable;

import 'adts_header.dart';

/// What stands at the path of a capture.
///
/// It is one of [NoCapture], [ForeignFile] and [FoundCapture], so that a
/// `switch` has to think of each.
@immutable
sealed class CaptureLook {
  const CaptureLook._(this.path);

  /// The path that was looked at.
  final String path;
}

/// There is nothing: no file, or an empty one.
final class NoCapture extends CaptureLook {
  /// Creates a look that has found nothing at [path].
  const NoCapture({required String path}) : super._(path);
}

/// There is something, but it doesn't begin like a capture. Leave it alone.
final class ForeignFile extends CaptureLook {
  /// Creates a look that has found something else at [path].
  const ForeignFile({required String path}) : super._(path);
}

/// There is a capture, sealed or not: a file says nothing about that.
///
/// The figures are those of the whole frames that follow each other without a
/// gap from the start of the file.
final class FoundCapture extends CaptureLook {
  /// Creates a look that has found a capture at [path].
  const FoundCapture({
    required String path,
    required this.sampleRate,
    required this.channels,
    required this.duration,
    required this.wholeBytes,
    required this.bytes,
  }) : super._(path);

  /// The sample rate in Hz, as the first frame names it.
  final int sampleRate;

  /// The number of channels, as the first frame names it.
  final int channels;

  /// How long the whole frames play.
  final Duration duration;

  /// Where the last of the whole frames ends.
  final int wholeBytes;

  /// The size of the file.
  final int bytes;

  /// Whether something else follows the whole frames: mostly a torn frame, as
  /// a crash leaves it, which is cut off when the capture is resumed or
  /// finalized.
  bool get isTorn => wholeBytes < bytes;
}

/// Looks at the file at [path] without changing it. Throws a
/// [FileSystemException] when it can't be read, and when it can't be told
/// whether there is one.
Future<CaptureLook> lookAtCapture(String path) async {
  if (!await isThere(path)) {
    return NoCapture(path: path);
  }
  if (await FileSystemEntity.type(path) != FileSystemEntityType.file) {
    return ForeignFile(path: path);
  }
  final RandomAccessFile file = await File(path).open();
  try {
    final int bytes = await file.length();
    return bytes == 0
        ? NoCapture(path: path)
        : await _lookInto(file, path: path, bytes: bytes);
  } finally {
    await file.close();
  }
}

/// Whether there is anything at [path]. Throws a [FileSystemException] when
/// that can't be told: in a folder that may not be searched, for one.
Future<bool> isThere(String path) async {
  if (await FileSystemEntity.type(path) != FileSystemEntityType.notFound) {
    return true;
  }
  // Every failure looks like that. To open what isn't there says which it was.
  try {
    final RandomAccessFile file = await File(path).open();
    await file.close();
    return true;
  } on PathNotFoundException {
    return false;
  }
}

Future<CaptureLook> _lookInto(
  RandomAccessFile file, {
  required String path,
  required int bytes,
}) async {
  final _FrameWalk walk = _FrameWalk(file, bytes);
  final AdtsHeader? first = await walk.headerHere();
  if (first == null || first.channels == 0) {
    return ForeignFile(path: path);
  }
  await walk.toTheEnd();
  return FoundCapture(
    path: path,
    sampleRate: first.sampleRate,
    channels: first.channels,
    duration: walk.duration,
    wholeBytes: walk.offset,
    bytes: bytes,
  );
}

// From frame to frame through a file that may be hours long: by headers alone,
// in pieces of some hundred frames.
class _FrameWalk {
  _FrameWalk(this._file, this._fileBytes);

  static const int _pieceBytes = 65536;

  final RandomAccessFile _file;
  final int _fileBytes;
  Uint8List _piece = Uint8List(0);
  int _pieceStart = 0;
  int _samples = 0;
  int _sampleRate = 0;

  // Where the next frame begins.
  int offset = 0;

  // Like the plugin's figure: all samples at the rate of the last frame.
  Duration get duration => _sampleRate == 0
      ? Duration.zero
      : Duration(milliseconds: _samples * 1000 ~/ _sampleRate);

  Future<AdtsHeader?> headerHere() async {
    if (offset + AdtsHeader.bytes > _pieceStart + _piece.length) {
      await _file.setPosition(offset);
      _piece = await _file.read(_pieceBytes);
      _pieceStart = offset;
    }
    return AdtsHeader.parse(_piece, offset - _pieceStart);
  }

  Future<void> toTheEnd() async {
    AdtsHeader? header = await headerHere();
    while (header != null && offset + header.frameBytes <= _fileBytes) {
      offset += header.frameBytes;
      _samples += header.samples;
      _sampleRate = header.sampleRate;
      header = await headerHere();
    }
  }
}

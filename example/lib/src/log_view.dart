import 'package:corvane/corvane.dart';
import 'package:flutter/material.dart';

/// The plugin's log.
class LogView extends StatelessWidget {
  /// Creates a view of [lines].
  const LogView({required this.lines, super.key});

  /// The lines, the newest first.
  final List<CorvaneLogLine> lines;

  @override
  Widget build(BuildContext context) {
    return ListView.builder(
      padding: const EdgeInsets.all(8),
      itemCount: lines.length,
      itemBuilder: (BuildContext context, int index) {
        final CorvaneLogLine line = lines[index];
        return Text(
          line.message,
          style: TextStyle(
            fontFamily: 'monospace',
            color: _colorOf(line.level, Theme.of(context).colorScheme),
          ),
        );
      },
    );
  }

  Color _colorOf(CorvaneLogLevel level, ColorScheme colors) {
    return switch (level) {
      CorvaneLogLevel.info => colors.onSurface,
      CorvaneLogLevel.warning => colors.tertiary,
      CorvaneLogLevel.error => colors.error,
    };
  }
}

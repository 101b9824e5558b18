import java.awt.event.WindowAdapter;
import java.awt.event.WindowEvent;
import javax.swing.JFrame;
import javax.swing.JLabel;
import javax.swing.SwingUtilities;

/** A window that ends the program with the given code when the user closes it. */
final class Window {
    private Window() {}

    static void show(String title, int exitCode) {
        SwingUtilities.invokeLater(() -> {
            JFrame frame = new JFrame(title);
            frame.add(new JLabel("Hello"));
            frame.setSize(300, 200);
            frame.setDefaultCloseOperation(JFrame.DISPOSE_ON_CLOSE);
            frame.addWindowListener(new WindowAdapter() {
                @Override
                public void windowClosed(WindowEvent event) {
                    System.exit(exitCode);
                }
            });
            frame.setVisible(true);
        });
    }
}
